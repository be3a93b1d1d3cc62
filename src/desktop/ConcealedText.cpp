#include "desktop/ConcealedText.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

ClipboardContents concealedText(const QString& text, ClipboardStay stay) {
  ClipboardItem item;
  item.contents.push_back({u"org.nspasteboard.ConcealedType"_s, {}});
  if (stay == ClipboardStay::ForThePasteOnly)
    item.contents.push_back({u"org.nspasteboard.TransientType"_s, {}});
  item.contents.push_back({u"x-kde-passwordManagerHint"_s, "secret"});
  item.contents.push_back({QString::fromUtf16(clipboardTextType), text.toUtf8()});
  return {std::move(item)};
}

}  // namespace vemo
