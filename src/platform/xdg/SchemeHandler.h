// Makes this program the one that the desktop opens addresses of a scheme with. Any thread.
#pragma once

#include <QString>

namespace vemo {

/// Claims the scheme for the user by a hidden desktop entry whose command is `program` open URL.
/// Replaces an earlier claim of ours; one that stands already costs two small reads. False when the
/// entry can't be written, or the desktop doesn't take it.
bool claimScheme(const QString& scheme, const QString& program);

}  // namespace vemo
