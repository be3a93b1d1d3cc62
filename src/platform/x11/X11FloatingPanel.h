// A panel as an X window with an alpha channel that no window manager manages (override-redirect):
// none can then put a full-screen window above it, give it the focus, or list it in a task bar,
// pager or window switcher, and it is on every virtual desktop. Its input region is empty, so the
// pointer passes through. Above what comes up later it is raised again.
//
// Without a compositor the window is shaped to what is drawn: a pixel of at least half of full
// alpha is opaque, the others aren't part of the window. Compositors may come and go meanwhile.
//
// Main thread only; the controller owns it. Requests are sent and not waited for; when the server
// dies they go nowhere. Hidden, it hears of nothing but compositors.
#pragma once

#include <QRect>
#include <vector>

#include "platform/x11/FrameTimer.h"
#include "platform/x11/X11Connection.h"
#include "ports/FloatingPanel.h"

namespace vemo {

class X11FloatingPanel : public FloatingPanel {
 public:
  /// Null when there's no X server with XFixes 2 and 24-bit colours.
  static std::unique_ptr<X11FloatingPanel> create(const QByteArray& displayName = {});
  ~X11FloatingPanel() override;

  void setFrame(const ScreenRect& frame, const Screen& screen) override;
  void setAlpha(double alpha) override;
  void orderFrontRegardless() override;
  void orderOut() override;
  void setAnimating(Animating animating) override;
  PanelPixels pixels() override;
  void present(const PixelRect& changed) override;
  bool isTranslucent() const override { return m_isTranslucent; }

 private:
  struct Visual {
    xcb_visualid_t id;
    std::uint8_t depth;

    bool hasAlpha() const { return depth == 32; }
  };

  X11FloatingPanel(std::unique_ptr<X11Connection> connection, Visual visual,
                   std::uint8_t firstXFixesEvent);

  static Visual chooseVisual(const X11Connection& connection);
  void createWindow();
  void describeWindow();
  void watchCompositors();
  void handleEvent(const xcb_generic_event_t& event);
  void setCompositor(xcb_window_t owner);
  void raise();
  void listenToOtherWindows(bool isListening);
  void put(const QRect& part);
  void shapeToPixels();
  void setShape(std::uint8_t kind, const std::vector<QRect>& shape);

  std::unique_ptr<X11Connection> m_connection;
  Visual m_visual;
  std::uint8_t m_firstXFixesEvent;
  xcb_colormap_t m_colormap = XCB_NONE;
  xcb_gcontext_t m_graphicsContext = XCB_NONE;
  xcb_window_t m_window = XCB_WINDOW_NONE;
  QRect m_place{0, 0, 1, 1};
  double m_scale = 1;
  std::vector<std::uint32_t> m_pixels{0};
  std::vector<std::uint32_t> m_sent;  ///< the part of the pixels that is put into the window
  std::optional<std::vector<QRect>> m_shape;  ///< of a window that isn't translucent, once set
  bool m_isTranslucent = false;
  bool m_isShown = false;
  int m_raisesLeft = 0;
  FrameTimer m_frames;
};

}  // namespace vemo
