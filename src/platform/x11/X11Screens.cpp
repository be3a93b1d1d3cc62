#include "platform/x11/X11Screens.h"

#include <xcb/randr.h>

#include <algorithm>
#include <ranges>

namespace vemo {

namespace {

constexpr double usualRate = 60;
constexpr double pixelsPerInchAtScaleOne = 96;
constexpr qsizetype maximumResourcesBytes = 256 << 10;

std::vector<QRect> toRectangles(const std::vector<uint32_t>& numbers) {
  std::vector<QRect> rectangles;
  for (std::size_t i = 0; i + 4 <= numbers.size(); i += 4)
    rectangles.emplace_back(int(numbers[i]), int(numbers[i + 1]), int(numbers[i + 2]),
                            int(numbers[i + 3]));
  return rectangles;
}

/// What lies above the area within the monitor.
int stripAbove(const QRect& area, const QRect& monitor) {
  return std::clamp(area.y() - monitor.y(), 0, monitor.height());
}

qint64 areaOf(const QRect& rectangle) {
  return qint64(rectangle.width()) * rectangle.height();
}

}  // namespace

std::unique_ptr<X11Screens> X11Screens::create(const QByteArray& displayName) {
  auto connection = X11Connection::create(displayName);
  if (!connection) return nullptr;
  const auto extension = connection->extension(xcb_randr_id);
  if (!extension) return nullptr;
  const auto version = connection->reply<xcb_randr_query_version_reply_t>(
      xcb_randr_query_version(connection->xcb(), 1, 5).sequence);
  if (!version || version->major_version != 1 || version->minor_version < 5) return nullptr;
  return std::unique_ptr<X11Screens>(new X11Screens(std::move(connection), extension->first_event));
}

X11Screens::X11Screens(std::unique_ptr<X11Connection> connection, std::uint8_t firstEvent)
    : m_connection(std::move(connection)), m_windows(*m_connection), m_firstEvent(firstEvent) {
  m_connection->setEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
  xcb_randr_select_input(m_connection->xcb(), m_connection->root(),
                         XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                             XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
  // Monitors that a user has defined upon the others change with no event but the root window's.
  const uint32_t eventMask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(m_connection->xcb(), m_connection->root(), XCB_CW_EVENT_MASK,
                               &eventMask);
  m_connection->flush();
}

void X11Screens::handleEvent(const xcb_generic_event_t& event) {
  const int type = event.response_type & 0x7F;
  if (type == XCB_CONFIGURE_NOTIFY || type == m_firstEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
      type == m_firstEvent + XCB_RANDR_NOTIFY)
    changed.notify();
}

std::optional<Screen> X11Screens::mainScreen() const {
  const auto all = monitors();
  if (all.empty()) return std::nullopt;
  auto main = std::ranges::find_if(all, &Monitor::isPrimary);
  if (const auto window = activeWindow()) {
    const auto shared = [&](const Monitor& monitor) { return areaOf(monitor.pixels & *window); };
    const auto largest = std::ranges::max_element(all, {}, shared);
    if (shared(*largest) > 0) main = largest;
  }
  if (main == all.end()) return std::nullopt;
  return screenOf(*main, all.size());
}

std::vector<Screen> X11Screens::screens() const {
  const auto all = monitors();
  std::vector<Screen> screens;
  screens.reserve(all.size());
  for (const Monitor& monitor : all) screens.push_back(screenOf(monitor, all.size()));
  return screens;
}

std::vector<X11Screens::Monitor> X11Screens::monitors() const {
  std::vector<Monitor> monitors;
  const auto answer = m_connection->reply<xcb_randr_get_monitors_reply_t>(
      xcb_randr_get_monitors(m_connection->xcb(), m_connection->root(), 1).sequence);
  if (!answer) return monitors;
  for (auto each = xcb_randr_get_monitors_monitors_iterator(answer.get()); each.rem;
       xcb_randr_monitor_info_next(&each)) {
    const xcb_randr_monitor_info_t& info = *each.data;
    if (info.width == 0 || info.height == 0) continue;
    const bool hasOutput = xcb_randr_monitor_info_outputs_length(&info) > 0;
    monitors.push_back(
        {.pixels = QRect(info.x, info.y, info.width, info.height),
         .isPrimary = info.primary != 0,
         .output = hasOutput ? std::optional<std::uint32_t>(*xcb_randr_monitor_info_outputs(&info))
                             : std::nullopt});
  }
  return monitors;
}

Screen X11Screens::screenOf(const Monitor& monitor, std::size_t monitorCount) const {
  const double factor = scale();
  const QRect& pixels = monitor.pixels;
  return {.frame = {pixels.x() / factor, pixels.y() / factor, pixels.width() / factor,
                    pixels.height() / factor},
          .safeAreaTop = 0,
          .topStripThickness = topStrip(pixels, monitorCount) / factor,
          .scale = factor,
          .refreshRate = monitor.output ? refreshRate(*monitor.output) : usualRate};
}

double X11Screens::scale() const {
  const auto resources =
      m_connection->property(m_connection->root(), XCB_ATOM_RESOURCE_MANAGER,
                             X11Connection::AfterRead::Keep, maximumResourcesBytes);
  if (!resources || resources->format != 8) return 1;
  for (const QByteArray& line : resources->data.split('\n')) {
    if (!line.startsWith("Xft.dpi:")) continue;
    const double pixelsPerInch = line.sliced(line.indexOf(':') + 1).trimmed().toDouble();
    return std::clamp(pixelsPerInch / pixelsPerInchAtScaleOne, 1.0, 4.0);
  }
  return 1;
}

double X11Screens::refreshRate(std::uint32_t output) const {
  xcb_connection_t* xcb = m_connection->xcb();
  const auto resources = m_connection->reply<xcb_randr_get_screen_resources_current_reply_t>(
      xcb_randr_get_screen_resources_current(xcb, m_connection->root()).sequence);
  if (!resources) return usualRate;
  const auto info = m_connection->reply<xcb_randr_get_output_info_reply_t>(
      xcb_randr_get_output_info(xcb, output, resources->config_timestamp).sequence);
  if (!info || info->crtc == XCB_NONE) return usualRate;
  const auto crtc = m_connection->reply<xcb_randr_get_crtc_info_reply_t>(
      xcb_randr_get_crtc_info(xcb, info->crtc, resources->config_timestamp).sequence);
  if (!crtc) return usualRate;
  const std::span modes(xcb_randr_get_screen_resources_current_modes(resources.get()),
                        resources->num_modes);
  const auto mode = std::ranges::find(modes, crtc->mode, &xcb_randr_mode_info_t::id);
  if (mode == modes.end() || mode->htotal == 0 || mode->vtotal == 0) return usualRate;
  const double rate = double(mode->dot_clock) / mode->htotal / mode->vtotal;
  // Virtual displays tell rates that nothing is shown at.
  return rate >= 20 && rate <= 250 ? rate : usualRate;
}

std::optional<QRect> X11Screens::activeWindow() const {
  const xcb_window_t window = m_windows.active();
  if (window == XCB_WINDOW_NONE) return std::nullopt;
  xcb_connection_t* xcb = m_connection->xcb();
  const auto size =
      m_connection->reply<xcb_get_geometry_reply_t>(xcb_get_geometry(xcb, window).sequence);
  const auto place = m_connection->reply<xcb_translate_coordinates_reply_t>(
      xcb_translate_coordinates(xcb, window, m_connection->root(), 0, 0).sequence);
  if (!size || !place) return std::nullopt;
  return QRect(place->dst_x, place->dst_y, size->width, size->height);
}

/// The window manager tells one work area for all monitors together, so that of several monitors
/// only those that extend a monitor's own strip are known: from its own list, or from the panels.
int X11Screens::topStrip(const QRect& monitor, std::size_t monitorCount) const {
  const xcb_window_t root = m_connection->root();
  const auto desktops = m_windows.numbers(root, "_NET_CURRENT_DESKTOP", XCB_ATOM_CARDINAL);
  const uint32_t desktop = desktops.empty() ? 0 : desktops.front();
  const auto byMonitor = toRectangles(
      m_windows.numbers(root, "_GTK_WORKAREAS_D" + QByteArray::number(desktop), XCB_ATOM_CARDINAL));
  for (const QRect& area : byMonitor) {
    if (monitor.intersects(area)) return stripAbove(area, monitor);
  }
  const auto areas = toRectangles(m_windows.numbers(root, "_NET_WORKAREA", XCB_ATOM_CARDINAL));
  if (monitorCount == 1 && desktop < areas.size()) return stripAbove(areas[desktop], monitor);
  return topStripOfPanels(monitor);
}

int X11Screens::topStripOfPanels(const QRect& monitor) const {
  int strip = 0;
  for (const xcb_window_t window : m_windows.clients()) {
    // left, right, top, bottom, then where each starts and ends along its edge
    const auto strut = m_windows.numbers(window, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL);
    if (strut.size() != 12) continue;
    const QRect panel(QPoint(int(strut[8]), 0), QPoint(int(strut[9]), int(strut[2]) - 1));
    const QRect onMonitor = panel & monitor;
    if (!onMonitor.isEmpty()) strip = std::max(strip, onMonitor.bottom() + 1 - monitor.y());
  }
  return strip;
}

}  // namespace vemo
