#include "session/Phase.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

QString Phase::name() const {
  switch (kind) {
    case Kind::Idle:
      return u"idle"_s;
    case Kind::Recording:
      return u"recording"_s;
    case Kind::Transcribing:
      return u"transcribing"_s;
    case Kind::Injecting:
      return u"injecting"_s;
    case Kind::Error:
      return u"error"_s;
  }
  return {};
}

}  // namespace vemo
