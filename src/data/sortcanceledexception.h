#pragma once

#include <exception>

// The one way out of a running sort: thrown from the progress hook inside the
// comparator, it unwinds the merge sort and frees its buffers on the way, so a
// cancelled sort leaves nothing behind and builds no undo command.
class SortCanceledException : public std::exception {
public:
    const char* what() const noexcept override { return "Sort operation cancelled by user"; }
};
