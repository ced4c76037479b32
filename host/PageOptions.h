#pragma once

namespace CLI {
class App;
}

namespace orvane {

/// Adds the options of the program itself that write something about it and end it: `--page`, its
/// manual page and completions, and `--modules`, the strategy modules that it finds. What is shown
/// is all that `app` holds at the time it parses. Writing ends the parse with `CLI::Success`.
void addPageOptions(CLI::App& app);

}  // namespace orvane
