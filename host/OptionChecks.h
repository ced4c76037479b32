#pragma once

#include <CLI/App.hpp>
#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

/// A check of an option that takes a whole number between two bounds, both inclusive. Its message
/// tells the value and the bounds.
CLI::Validator wholeNumber(std::uint64_t lowest, std::uint64_t highest);

/// A check of an option that takes one of a few words. Its message names them, and the one that was
/// probably meant.
CLI::Validator oneOf(const std::vector<std::string>& words);

/// A check of an option that takes a number above 0. Its message tells the value.
CLI::Validator numberAboveZero();

/// Refuses options that were given an empty text, which is what a variable of a script that was
/// never set looks like. Throws `InputError`.
void refuseEmptyTexts(const CLI::App& command);

/// What is wrong with a command line, in one message.
std::string faultOf(const CLI::ParseError& error, const CLI::App& app, int argc, char** argv);

}  // namespace orvane
