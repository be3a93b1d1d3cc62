#include "ui/PillColors.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr PillTheme dark{.pill = {.fill = {0.0549020, 0.0549020, 0.0627451, 0.94},
                                  .stroke = {1, 1, 1, 0.14},
                                  .text = white},
                         .waveform = {.bright = {0.62, 0.45, 0.98},
                                      .edge = {0.5216, 0.3922, 0.9059},
                                      .processingRest = {0.45, 0.45, 0.5}}};

constexpr PillTheme teal{.pill = {.fill = {0.5215686, 0.3921569, 0.9058824, 0.96},
                                  .stroke = {0.7882353, 0.7215686, 0.9686275, 0.40},
                                  .text = white},
                         .waveform = {.bright = {0.98, 1.0, 0.98},
                                      .edge = {0.98, 1.0, 0.98},
                                      .processingRest = {0.88, 0.85, 0.98}}};

constexpr PillTheme light{.pill = {.fill = {0.9803922, 0.9882353, 1.0, 0.98},
                                   .stroke = {0, 0, 0, 0.12},
                                   .text = {0.0666667, 0.0941176, 0.1529412}},
                          .waveform = {.bright = {0.6196, 0.451, 0.9804},
                                       .edge = {0.3569, 0.2471, 0.749},
                                       .processingRest = {0.45, 0.45, 0.5}}};

}  // namespace

const PillTheme& pillTheme(const QString& pillColor) {
  if (pillColor == u"teal"_s) return teal;
  if (pillColor == u"light"_s) return light;
  return dark;
}

}  // namespace vemo
