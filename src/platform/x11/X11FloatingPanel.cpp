#include "platform/x11/X11FloatingPanel.h"

#include <unistd.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vemo {

namespace {

/// A window that always wants to be on top as well would otherwise contend for ever.
constexpr int raisesPerShow = 50;
constexpr std::uint32_t opaqueFrom = 128;

template <typename Event>
const Event& as(const xcb_generic_event_t& event) {
  return reinterpret_cast<const Event&>(event);
}

std::uint32_t alphaOf(std::uint32_t pixel) {
  return pixel >> 24;
}

bool isOpaqueEnough(std::uint32_t pixel) {
  return alphaOf(pixel) >= opaqueFrom;
}

std::uint32_t madeOpaque(std::uint32_t pixel) {
  if (!isOpaqueEnough(pixel)) return 0;
  std::uint32_t opaque = 0xFF;
  for (const int shift : {16, 8, 0})
    opaque = opaque << 8 | std::min(255U, (pixel >> shift & 0xFF) * 255 / alphaOf(pixel));
  return opaque;
}

}  // namespace

std::unique_ptr<X11FloatingPanel> X11FloatingPanel::create(const QByteArray& displayName) {
  auto connection = X11Connection::create(displayName);
  if (!connection) return nullptr;
  const auto extension = connection->extension(xcb_xfixes_id);
  if (!extension) return nullptr;
  const auto version = connection->reply<xcb_xfixes_query_version_reply_t>(
      xcb_xfixes_query_version(connection->xcb(), 5, 0).sequence);
  if (!version || version->major_version < 2) return nullptr;
  const Visual visual = chooseVisual(*connection);
  if (visual.depth < 24) return nullptr;
  return std::unique_ptr<X11FloatingPanel>(
      new X11FloatingPanel(std::move(connection), visual, extension->first_event));
}

/// One with an alpha channel; without, the screen's own.
X11FloatingPanel::Visual X11FloatingPanel::chooseVisual(const X11Connection& connection) {
  const xcb_setup_t* setup = xcb_get_setup(connection.xcb());
  for (auto screen = xcb_setup_roots_iterator(setup); screen.rem; xcb_screen_next(&screen)) {
    if (screen.data->root != connection.root()) continue;
    auto depth = xcb_screen_allowed_depths_iterator(screen.data);
    for (; depth.rem; xcb_depth_next(&depth)) {
      if (depth.data->depth != 32) continue;
      auto visual = xcb_depth_visuals_iterator(depth.data);
      for (; visual.rem; xcb_visualtype_next(&visual)) {
        if (visual.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.data->red_mask == 0xFF0000)
          return {visual.data->visual_id, 32};
      }
    }
    return {screen.data->root_visual, screen.data->root_depth};
  }
  return {XCB_NONE, 0};
}

X11FloatingPanel::X11FloatingPanel(std::unique_ptr<X11Connection> connection, Visual visual,
                                   std::uint8_t firstXFixesEvent)
    : m_connection(std::move(connection)),
      m_visual(visual),
      m_firstXFixesEvent(firstXFixesEvent),
      m_frames([this] {
        if (onFrame) onFrame();
      }) {
  createWindow();
  describeWindow();
  m_connection->setEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
  watchCompositors();
  m_connection->flush();
}

X11FloatingPanel::~X11FloatingPanel() {
  m_frames.stop();
  m_connection->setEventHandler({});
}

void X11FloatingPanel::createWindow() {
  xcb_connection_t* xcb = m_connection->xcb();
  m_colormap = xcb_generate_id(xcb);
  xcb_create_colormap(xcb, XCB_COLORMAP_ALLOC_NONE, m_colormap, m_connection->root(), m_visual.id);
  m_window = xcb_generate_id(xcb);
  xcb_create_window_value_list_t values{};  // background and border are fully transparent
  values.override_redirect = 1;
  values.event_mask = XCB_EVENT_MASK_EXPOSURE;
  values.colormap = m_colormap;
  xcb_create_window_aux(xcb, m_visual.depth, m_window, m_connection->root(), int16_t(m_place.x()),
                        int16_t(m_place.y()), uint16_t(m_place.width()), uint16_t(m_place.height()),
                        0, XCB_WINDOW_CLASS_INPUT_OUTPUT, m_visual.id,
                        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT |
                            XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                        &values);
  m_graphicsContext = xcb_generate_id(xcb);
  xcb_create_gc(xcb, m_graphicsContext, m_window, 0, nullptr);
  setShape(XCB_SHAPE_SK_INPUT, {});
}

/// For compositors and other programs that look at windows: nothing here tells what is shown.
void X11FloatingPanel::describeWindow() {
  const auto set = [this](const QByteArray& name, xcb_atom_t type, std::uint8_t format,
                          const void* data, std::size_t count) {
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, m_window,
                        m_connection->atom(name), type, format, std::uint32_t(count), data);
  };
  const QByteArray name = "Vemo";
  set("WM_NAME", XCB_ATOM_STRING, 8, name.constData(), name.size());
  set("_NET_WM_NAME", m_connection->atom("UTF8_STRING"), 8, name.constData(), name.size());
  constexpr char windowClass[] = "vemo\0Vemo";
  set("WM_CLASS", XCB_ATOM_STRING, 8, windowClass, sizeof windowClass);
  const auto process = static_cast<std::uint32_t>(getpid());
  set("_NET_WM_PID", XCB_ATOM_CARDINAL, 32, &process, 1);
  const xcb_atom_t type = m_connection->atom("_NET_WM_WINDOW_TYPE_NOTIFICATION");
  set("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, 32, &type, 1);
  // Takes no input: the first flag says that the second field holds, which is zero.
  const std::uint32_t hints[9] = {1, 0};
  set("WM_HINTS", m_connection->atom("WM_HINTS"), 32, hints, std::size(hints));
}

void X11FloatingPanel::watchCompositors() {
  const xcb_atom_t selection = m_connection->atom("_NET_WM_CM_S0");
  xcb_xfixes_select_selection_input(m_connection->xcb(), m_connection->window(), selection,
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
  const auto owner = m_connection->reply<xcb_get_selection_owner_reply_t>(
      xcb_get_selection_owner(m_connection->xcb(), selection).sequence);
  setCompositor(owner ? owner->owner : XCB_WINDOW_NONE);
}

void X11FloatingPanel::setCompositor(xcb_window_t owner) {
  const bool isTranslucent = m_visual.hasAlpha() && owner != XCB_WINDOW_NONE;
  if (isTranslucent == m_isTranslucent) return;
  m_isTranslucent = isTranslucent;
  m_shape.reset();
  if (isTranslucent) {
    xcb_xfixes_set_window_shape_region(m_connection->xcb(), m_window, XCB_SHAPE_SK_BOUNDING, 0, 0,
                                       XCB_NONE);
    m_connection->flush();
  }
  if (onRedrawNeeded) onRedrawNeeded();
}

void X11FloatingPanel::handleEvent(const xcb_generic_event_t& event) {
  const int type = event.response_type & 0x7F;
  if (type == m_firstXFixesEvent + XCB_XFIXES_SELECTION_NOTIFY) {
    setCompositor(as<xcb_xfixes_selection_notify_event_t>(event).owner);
  } else if (type == XCB_EXPOSE) {
    const auto& exposed = as<xcb_expose_event_t>(event);
    present({exposed.x, exposed.y, exposed.width, exposed.height});
  } else if (type == XCB_CONFIGURE_NOTIFY) {
    if (as<xcb_configure_notify_event_t>(event).above_sibling == m_window) raise();
  } else if (type == XCB_MAP_NOTIFY) {
    if (as<xcb_map_notify_event_t>(event).window != m_window) raise();
  }
}

void X11FloatingPanel::setFrame(const ScreenRect& frame, const Screen& screen) {
  m_scale = screen.scale;
  m_frames.setRate(screen.refreshRate);
  const auto inPixels = [this](double points) { return int(std::lround(points * m_scale)); };
  const QRect place(inPixels(frame.x), inPixels(frame.y), std::max(1, inPixels(frame.width)),
                    std::max(1, inPixels(frame.height)));
  if (place == m_place) return;
  if (place.size() != m_place.size()) {
    m_pixels = std::vector<std::uint32_t>(std::size_t(place.width()) * place.height());
    m_shape.reset();
  }
  m_place = place;
  xcb_configure_window_value_list_t values{};
  values.x = place.x();
  values.y = place.y();
  values.width = std::uint32_t(place.width());
  values.height = std::uint32_t(place.height());
  xcb_configure_window_aux(m_connection->xcb(), m_window,
                           XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                               XCB_CONFIG_WINDOW_HEIGHT,
                           &values);
  m_connection->flush();
}

void X11FloatingPanel::setAlpha(double alpha) {
  const xcb_atom_t property = m_connection->atom("_NET_WM_WINDOW_OPACITY");
  if (alpha >= 1) {
    xcb_delete_property(m_connection->xcb(), m_window, property);
  } else {
    const auto value = static_cast<std::uint32_t>(std::clamp(alpha, 0.0, 1.0) * 0xFFFFFFFF);
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, m_window, property,
                        XCB_ATOM_CARDINAL, 32, 1, &value);
  }
  m_connection->flush();
}

void X11FloatingPanel::orderFrontRegardless() {
  m_raisesLeft = raisesPerShow;
  raise();
  if (!m_isShown) {
    m_isShown = true;
    listenToOtherWindows(true);
    if (!m_isTranslucent) shapeToPixels();
    xcb_map_window(m_connection->xcb(), m_window);
    put(QRect(QPoint(), m_place.size()));
  }
  m_connection->flush();
}

void X11FloatingPanel::orderOut() {
  if (!m_isShown) return;
  m_isShown = false;
  listenToOtherWindows(false);
  xcb_unmap_window(m_connection->xcb(), m_window);
  m_connection->flush();
}

void X11FloatingPanel::raise() {
  if (m_raisesLeft == 0) return;
  --m_raisesLeft;
  const std::uint32_t mode = XCB_STACK_MODE_ABOVE;
  xcb_configure_window(m_connection->xcb(), m_window, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
}

void X11FloatingPanel::listenToOtherWindows(bool isListening) {
  const std::uint32_t mask = isListening ? XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY : 0;
  xcb_change_window_attributes(m_connection->xcb(), m_connection->root(), XCB_CW_EVENT_MASK, &mask);
}

void X11FloatingPanel::setAnimating(Animating animating) {
  if (animating == Animating::Yes)
    m_frames.start();
  else
    m_frames.stop();
}

PanelPixels X11FloatingPanel::pixels() {
  return {m_pixels, m_place.width(), m_place.height(), m_scale};
}

void X11FloatingPanel::present(const PixelRect& changed) {
  if (!m_isShown) return;
  if (!m_isTranslucent) shapeToPixels();
  put(QRect(changed.x, changed.y, changed.width, changed.height));
  m_connection->flush();
}

void X11FloatingPanel::put(const QRect& part) {
  const QRect inside = part & QRect(QPoint(), m_place.size());
  if (inside.isEmpty()) return;
  m_sent.clear();
  for (int y = inside.top(); y <= inside.bottom(); ++y) {
    const auto row = m_pixels.begin() + std::ptrdiff_t(y) * m_place.width() + inside.left();
    m_sent.insert(m_sent.end(), row, row + inside.width());
  }
  if (!m_isTranslucent) std::ranges::transform(m_sent, m_sent.begin(), madeOpaque);

  const std::uint32_t rowBytes = std::uint32_t(inside.width()) * 4;
  const std::uint32_t requestBytes = xcb_get_maximum_request_length(m_connection->xcb()) * 4 - 64;
  const int rowsAtOnce = std::max(1, int(requestBytes / rowBytes));
  for (int row = 0; row < inside.height(); row += rowsAtOnce) {
    const int rows = std::min(rowsAtOnce, inside.height() - row);
    xcb_put_image(
        m_connection->xcb(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, m_graphicsContext,
        std::uint16_t(inside.width()), std::uint16_t(rows), std::int16_t(inside.x()),
        std::int16_t(inside.y() + row), 0, m_visual.depth, rowBytes * rows,
        reinterpret_cast<const std::uint8_t*>(m_sent.data()) + std::size_t(row) * rowBytes);
  }
}

void X11FloatingPanel::shapeToPixels() {
  std::vector<QRect> spans;
  auto row = m_pixels.cbegin();
  for (int y = 0; y < m_place.height(); ++y, row += m_place.width()) {
    const auto end = row + m_place.width();
    for (auto from = std::find_if(row, end, isOpaqueEnough); from != end;) {
      const auto to = std::find_if_not(from, end, isOpaqueEnough);
      spans.emplace_back(int(from - row), y, int(to - from), 1);
      from = std::find_if(to, end, isOpaqueEnough);
    }
  }
  if (spans == m_shape) return;
  setShape(XCB_SHAPE_SK_BOUNDING, spans);
  m_shape = std::move(spans);
}

void X11FloatingPanel::setShape(std::uint8_t kind, const std::vector<QRect>& shape) {
  std::vector<xcb_rectangle_t> rectangles;
  rectangles.reserve(shape.size());
  for (const QRect& rect : shape)
    rectangles.push_back({std::int16_t(rect.x()), std::int16_t(rect.y()),
                          std::uint16_t(rect.width()), std::uint16_t(rect.height())});
  xcb_connection_t* xcb = m_connection->xcb();
  const xcb_xfixes_region_t region = xcb_generate_id(xcb);
  xcb_xfixes_create_region(xcb, region, std::uint32_t(rectangles.size()), rectangles.data());
  xcb_xfixes_set_window_shape_region(xcb, m_window, kind, 0, 0, region);
  xcb_xfixes_destroy_region(xcb, region);
}

}  // namespace vemo
