// The keyboard layouts that the session is set up with.
#pragma once

#include <QByteArray>
#include <QStringList>

namespace vemo {

/// Layouts in their order, each with its variant where it has one: "de", "us(dvorak)". Empty when
/// there is no server, or it doesn't tell. Main thread.
QStringList readX11InputSources(const QByteArray& displayName = {});

}  // namespace vemo
