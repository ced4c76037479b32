#pragma once

#include <QByteArray>
#include <string>

namespace orvane {

/// Writes a file that appears whole: readers and interrupted runs never see half of one. Answers
/// what went wrong, which names the path, as one UTF-8 message; empty if nothing did.
std::string writeWholeFile(const std::string& path, const QByteArray& text);

/// Sees, before anything runs, that files can be written to a folder, which need not be there yet.
/// Changes nothing. Throws `InputError` that begins with `option`.
void checkFolder(const std::string& folder, const std::string& option);

/// Makes the folder if need be. Throws `InputError` that begins with `option`.
void makeFolder(const std::string& folder, const std::string& option);

}  // namespace orvane
