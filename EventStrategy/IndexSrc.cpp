#include "EventStrategy/IndexSrc.h"

#include "EventStrategy/Attempts.h"
#include "EventStrategy/IndexNotify.h"
#include "EventStrategy/Log.h"
#include "shared/TextForms.h"

namespace orvane {

IndexSrc::IndexSrc() = default;
IndexSrc::~IndexSrc() = default;

void IndexSrc::setName(const std::string& name) {
  const std::lock_guard lock(mutex_);
  name_ = name;
}

void IndexSrc::setNotify(IndexNotify* notify) {
  const std::lock_guard lock(mutex_);
  notify_ = notify;
}

void IndexSrc::subscribeElementChange(const ICodeID& code) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",subscribeElementChange," << codeText(code));
  codes_.insert(code);
  IIndexTrade::instance()->subscribeElementChange(code, shared_from_this());
}

void IndexSrc::unsubscribeElementChange(const ICodeID& code) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",unsubscribeElementChange," << codeText(code));
  IIndexTrade::instance()->unsubscribeElementChange(code, shared_from_this());
  codes_.erase(code);
}

void IndexSrc::unsubscribeAll() { withdrawAll(",unsubscribeAll,unsubscribeElementChange,"); }

void IndexSrc::release() { withdrawAll(",release,unsubscribeElementChange,"); }

void IndexSrc::withdrawAll(const char* tag) {
  const std::lock_guard lock(mutex_);
  detail::Attempts attempts;
  for (const ICodeID& code : codes_) {
    ORVANE_LOG(event, Debug, name_ << tag << codeText(code));
    attempts.take(
        [&] { IIndexTrade::instance()->unsubscribeElementChange(code, shared_from_this()); });
  }
  codes_.clear();
  attempts.finish();
}

ResultStatus IndexSrc::indexElements(const ICodeID& code, std::list<IndexTradeElement>& elements) {
  return IIndexTrade::instance()->indexElements(code, elements);
}

void IndexSrc::onElementChange(const ICodeID& code, std::list<IndexTradeElement>& elements) {
  const std::lock_guard lock(mutex_);
  if (codes_.contains(code) && notify_ != nullptr) notify_->onElementChange(code, elements);
}

}  // namespace orvane
