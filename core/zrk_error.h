// The one exception type of the operators: a constant text, never formatted.
// Wrappers catch it (and std::bad_alloc, which counts as "out of memory") and report it.
#pragma once

#include <exception>

class ZrkError : public std::exception {
  public:
    explicit ZrkError(const char* text) noexcept : text_(text) {}
    const char* what() const noexcept override { return text_; }

  private:
    const char* text_;
};

// Raises a constant text.
[[noreturn]] void Raise(const char* text);
