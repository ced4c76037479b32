#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "EventStrategy/IIndexSrc.h"
#include "services/QuoteClient/IIndexTrade.h"

namespace orvane {

class IndexNotify;

namespace detail {
struct TestAccess;
}

/// One strategy's watch on the composition of indexes. Made with `make_shared`, owned by an
/// `AbstractEventStrategy` and shared by the service while a subscription stands. Any thread may
/// call it. The mutex is held across the service's operations, so the service must deliver on its
/// own thread.
class IndexSrc final : public IIndexSrc,
                       public IndexTradeSpi,
                       public std::enable_shared_from_this<IndexSrc> {
 public:
  IndexSrc();
  ~IndexSrc() override;

  void setName(const std::string& name);
  /// Where changes go; null drops them. When it returns, no call-back runs through the old one.
  void setNotify(IndexNotify* notify);

  void subscribeElementChange(const ICodeID& code);
  void unsubscribeElementChange(const ICodeID& code);
  /// Both withdraw every code from the service, whatever single withdrawals throw; then they throw
  /// the first of that. The object stays usable.
  void unsubscribeAll();
  void release();

  ResultStatus indexElements(const ICodeID& code, std::list<IndexTradeElement>& elements) override;
  void onElementChange(const ICodeID& code, std::list<IndexTradeElement>& elements) override;

 private:
  friend struct detail::TestAccess;

  void withdrawAll(const char* tag);

  std::mutex mutex_;  ///< Guards everything below; held while `notify_` is called.
  std::string name_;
  IndexNotify* notify_ = nullptr;  ///< Borrowed.
  std::set<ICodeID> codes_;
};

}  // namespace orvane
