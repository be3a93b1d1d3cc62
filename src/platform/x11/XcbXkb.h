// xcb's header for XKB, which as it stands isn't C++: a field of it is named by a keyword.
#pragma once

#include <xcb/xcb.h>

#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#ifdef __clang__
#pragma clang diagnostic pop
#endif
