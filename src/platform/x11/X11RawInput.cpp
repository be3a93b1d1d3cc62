#include "platform/x11/X11RawInput.h"

#include <QByteArrayView>
#include <utility>

namespace vemo {

namespace {

constexpr std::pair<std::uint16_t, std::uint16_t> version{2, 2};
/// The name that the server gives its virtual keyboards ends so.
constexpr QByteArrayView virtualKeyboardSuffix = "XTEST keyboard";

QByteArrayView nameOf(const xcb_input_xi_device_info_t& device) {
  return {xcb_input_xi_device_info_name(&device), xcb_input_xi_device_info_name_length(&device)};
}

}  // namespace

std::optional<X11RawInput> X11RawInput::create(X11Connection& connection) {
  const auto input = connection.extension(xcb_input_id);
  if (!input) return std::nullopt;
  const auto answer = connection.reply<xcb_input_xi_query_version_reply_t>(
      xcb_input_xi_query_version(connection.xcb(), version.first, version.second).sequence);
  if (!answer || std::pair(answer->major_version, answer->minor_version) < version)
    return std::nullopt;
  return X11RawInput(connection, input->major_opcode);
}

std::uint32_t X11RawInput::selectKeys(bool isListening) {
  constexpr std::uint32_t keys =
      XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
  return select(XCB_INPUT_DEVICE_ALL_MASTER, isListening ? keys : 0);
}

void X11RawInput::selectHierarchy(bool isListening) {
  select(XCB_INPUT_DEVICE_ALL, isListening ? XCB_INPUT_XI_EVENT_MASK_HIERARCHY : 0);
}

std::uint32_t X11RawInput::select(std::uint16_t devices, std::uint32_t mask) {
  const struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } selection{{devices, 1}, mask};
  return xcb_input_xi_select_events(m_connection->xcb(), m_connection->root(), 1, &selection.head)
      .sequence;
}

bool X11RawInput::isInputEvent(const xcb_generic_event_t& event) const {
  return event.response_type == XCB_GE_GENERIC &&
         reinterpret_cast<const xcb_ge_generic_event_t&>(event).extension == m_opcode;
}

std::optional<X11RawInput::KeyEvent> X11RawInput::keyEvent(const xcb_generic_event_t& event) const {
  if (!isInputEvent(event)) return std::nullopt;
  const auto& raw = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
  const bool isPress = raw.event_type == XCB_INPUT_RAW_KEY_PRESS;
  if (!isPress && raw.event_type != XCB_INPUT_RAW_KEY_RELEASE) return std::nullopt;
  return KeyEvent{isPress ? Strike::Press : Strike::Release, raw.detail, raw.sourceid,
                  raw.full_sequence};
}

bool X11RawInput::isHierarchyEvent(const xcb_generic_event_t& event) const {
  return isInputEvent(event) &&
         reinterpret_cast<const xcb_ge_generic_event_t&>(event).event_type == XCB_INPUT_HIERARCHY;
}

std::optional<std::vector<X11RawInput::Keyboard>> X11RawInput::keyboards() {
  const auto answer = m_connection->reply<xcb_input_xi_query_device_reply_t>(
      xcb_input_xi_query_device(m_connection->xcb(), XCB_INPUT_DEVICE_ALL).sequence);
  if (!answer) return std::nullopt;
  std::vector<Keyboard> keyboards;
  for (auto device = xcb_input_xi_query_device_infos_iterator(answer.get()); device.rem;
       xcb_input_xi_device_info_next(&device)) {
    if (device.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD && device.data->enabled) {
      keyboards.push_back(
          {device.data->deviceid, nameOf(*device.data).endsWith(virtualKeyboardSuffix)});
    }
  }
  return keyboards;
}

std::optional<X11RawInput::HeldKeys> X11RawInput::heldKeys(std::uint16_t keyboard) {
  const auto request =
      xcb_input_query_device_state(m_connection->xcb(), static_cast<std::uint8_t>(keyboard));
  const auto answer = m_connection->reply<xcb_input_query_device_state_reply_t>(request.sequence);
  if (!answer) return std::nullopt;
  HeldKeys held{{}, request.sequence};
  for (auto state = xcb_input_query_device_state_classes_iterator(answer.get()); state.rem;
       xcb_input_input_state_next(&state)) {
    if (state.data->class_id != XCB_INPUT_INPUT_CLASS_KEY) continue;
    const auto& keys = reinterpret_cast<const xcb_input_key_state_t&>(*state.data).keys;
    for (std::size_t code = 0; code < held.keys.size(); ++code)
      held.keys[code] = (keys[code / 8] >> (code % 8)) & 1;
  }
  return held;
}

}  // namespace vemo
