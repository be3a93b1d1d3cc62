// One form in which a selection's owner hands out its content: a target, and the property that
// answers a request for it. Type and format belong to the bytes: a TEXT target may well come as
// STRING.
#pragma once

#include <xcb/xcb.h>

#include <QByteArray>

namespace vemo {

struct X11Representation {
  xcb_atom_t target = XCB_ATOM_NONE;
  xcb_atom_t type = XCB_ATOM_NONE;
  int format = 8;
  QByteArray data;
};

}  // namespace vemo
