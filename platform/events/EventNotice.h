#pragma once

#include <map>
#include <string>
#include <tuple>

namespace orvane::detail {

/// One general event: what it is about, what happened, and what else it tells. Its key stands
/// among the fields as "key", or is empty. Texts are GBK.
struct EventNotice {
  std::string target;
  std::string name;
  std::map<std::string, std::string> fields;

  std::string key() const {
    const auto at = fields.find("key");
    return at == fields.end() ? std::string() : at->second;
  }

  friend bool operator<(const EventNotice& a, const EventNotice& b) {
    return std::tie(a.target, a.name, a.fields) < std::tie(b.target, b.name, b.fields);
  }
  friend bool operator==(const EventNotice&, const EventNotice&) = default;
};

}  // namespace orvane::detail
