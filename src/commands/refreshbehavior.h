#pragma once

#include <QMetaType>

#include <cstdint>

// What to do when another program changes an open file.
enum RefreshBehavior : int32_t {
    RefreshOnChange = 0,
    AskOnChange = 1,
    IgnoreChange = 2,
    InvalidRefresh = 3
};
