#include <orvane/sdk/Params.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

namespace {

/// Says "last words" at its first bar and, once somebody opened the pipe "gate" for writing, ends
/// the process in the way that "how" names: "abort", "fault", "exit" or "quick_exit". Before an
/// "exit" it writes to "file", without a flush, where one is named.
class Crashing : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject& params) override {
    gate_ = params["gate"].toString().toStdString();
    how_ = params["how"].toString().toStdString();
    file_ = params["file"].toString().toStdString();
    orvane::subscribeAllOrFail(context, params);
  }
  void onBarSeries(orvane::IContext*, const orvane::ICodeID&, const std::string&,
                   const std::vector<orvane::IKLine>&, const orvane::ResultStatus&, int) override {
    std::puts("last words");
    std::fflush(stdout);
    const std::ifstream opened(gate_);
    if (how_ == "abort") std::abort();
    if (how_ == "exit" && !file_.empty()) std::fputs("kept", std::fopen(file_.c_str(), "w"));
    if (how_ == "exit") std::exit(7);
    if (how_ == "quick_exit") std::quick_exit(0);
    static int* volatile nowhere = nullptr;
    *nowhere = 1;
  }

 private:
  std::string gate_, how_, file_;
};

}  // namespace

ORVANE_STRATEGY(Crashing)
