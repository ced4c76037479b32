#include "tests/support/FakeDataMaintain.h"

#include <string>
#include <utility>

namespace orvane::support {

class MaintainDesk::Maintain final : public IDataMaintain {
 public:
  explicit Maintain(MaintainDesk& desk) : desk_(desk) {}
  ~Maintain() override { desk_.calls_.record("maintain.release"); }

  ResultStatus maintain(const ICodeID& code, ITimeType timeType, int64 value,
                        const std::shared_ptr<IDataMaintainSpi>& spi, int requestId) override {
    {
      const std::lock_guard lock(desk_.mutex_);
      desk_.spi_ = spi;
    }
    return desk_.calls_.record("maintain.maintain",
                               std::to_string(requestId) + " code=" + std::to_string(code.id) +
                                   " type=" + std::to_string(static_cast<int>(timeType)) +
                                   " value=" + std::to_string(value));
  }

 private:
  MaintainDesk& desk_;
};

IDataMaintain* MaintainDesk::create() {
  calls_.record("maintain.create");
  return new Maintain(*this);
}

std::shared_ptr<IDataMaintainSpi> MaintainDesk::spi() const {
  const std::lock_guard lock(mutex_);
  return spi_;
}

void MaintainDesk::forget() {
  std::shared_ptr<IDataMaintainSpi> last;
  const std::lock_guard lock(mutex_);
  last.swap(spi_);
}

}  // namespace orvane::support
