#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/core/ZoneRules.h"

namespace orvane::detail {

/// The trading sessions of a code, such as "21:00-02:30,09:00-11:30", in its own zone. A session
/// holds its first instant and not its last; one whose end is not after its begin goes over
/// midnight. Immutable.
class SessionRule {
 public:
  /// Without any session everything is inside. Throws `std::invalid_argument`, in UTF-8, that names
  /// the field and the value.
  SessionRule(const std::string& sessions, const std::string& timeZone);

  bool contains(int64 utcMs) const;

 private:
  struct Session {
    int64 begin, end;  ///< Milliseconds since midnight.
  };
  std::vector<Session> sessions_;
  std::shared_ptr<const ZoneRules> zone_;
};

}  // namespace orvane::detail
