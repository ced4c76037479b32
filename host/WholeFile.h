#pragma once

#include <QByteArray>
#include <string>

namespace orvane {

/// What keeps a whole file from being put into the place of what has this name: a folder, a device
/// or a pipe, also behind links, or a link that leads nowhere. A UTF-8 phrase such as "is a
/// folder"; empty where there is a file or nothing at all.
std::string whyNoFile(const std::string& path);

/// What is written under a name: links stay, and what they lead to is meant.
std::string behindLinks(const std::string& path);

/// Writes a file that appears whole: readers and interrupted runs never see half of one. It takes
/// the place of files alone, and leaves links as they are. Answers what went wrong, which names the
/// path, as one UTF-8 message; empty if nothing did.
std::string writeWholeFile(const std::string& path, const QByteArray& text);

/// Sees, before anything runs, that files can be written to a folder, which need not be there yet.
/// Changes nothing. Throws `InputError` that begins with `option`.
void checkFolder(const std::string& folder, const std::string& option);

/// Makes the folder if need be. Throws as `failToWrite` does, a message that begins with `option`.
void makeFolder(const std::string& folder, const std::string& option);

}  // namespace orvane
