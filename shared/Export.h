#pragma once

/// Marks what a shared library of this project offers to others. Everything else stays hidden:
/// the libraries are built with hidden visibility. One macro serves both sides, since ELF needs
/// no difference between offering and using.
#define ORVANE_API __attribute__((visibility("default")))
