#include "contract/x11/TestKeyboard.h"

#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <cstring>

#include "platform/x11/X11RawInput.h"

namespace vemo {

namespace {

constexpr char masterName[] = "Test";
constexpr std::uint16_t firstDevice = 2;  // the server's first two masters

struct AddMaster {
  std::uint16_t type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_ADD_MASTER;
  std::uint16_t words = 3;
  std::uint16_t nameLength = sizeof(masterName) - 1;
  std::uint8_t sendsCore = 1;
  std::uint8_t isEnabled = 1;
  char name[4] = {'T', 'e', 's', 't'};
};

struct RemoveMaster {
  std::uint16_t type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_REMOVE_MASTER;
  std::uint16_t words = 3;
  std::uint16_t master;
  std::uint8_t mode = XCB_INPUT_CHANGE_MODE_ATTACH;
  std::uint8_t padding = 0;
  std::uint16_t toPointer = firstDevice;
  std::uint16_t toKeyboard = firstDevice + 1;
};

struct AttachSlave {
  std::uint16_t type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_ATTACH_SLAVE;
  std::uint16_t words = 2;
  std::uint16_t device;
  std::uint16_t master = firstDevice + 1;
};

struct DetachSlave {
  std::uint16_t type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_DETACH_SLAVE;
  std::uint16_t words = 2;
  std::uint16_t device;
  std::uint16_t padding = 0;
};

template <typename Change>
void changeHierarchy(X11Connection& connection, const Change& change) {
  xcb_input_xi_change_hierarchy(connection.xcb(), 1,
                                reinterpret_cast<const xcb_input_hierarchy_change_t*>(&change));
  connection.synchronize();
}

/// Of the first device of that kind and name.
std::uint16_t findDevice(X11Connection& connection, std::uint16_t type, const QByteArray& name) {
  const auto answer = connection.reply<xcb_input_xi_query_device_reply_t>(
      xcb_input_xi_query_device(connection.xcb(), XCB_INPUT_DEVICE_ALL).sequence);
  if (!answer) return 0;
  for (auto device = xcb_input_xi_query_device_infos_iterator(answer.get()); device.rem;
       xcb_input_xi_device_info_next(&device)) {
    const QByteArrayView deviceName(xcb_input_xi_device_info_name(device.data),
                                    xcb_input_xi_device_info_name_length(device.data));
    if (device.data->type == type && deviceName == name) return device.data->deviceid;
  }
  return 0;
}

}  // namespace

TestKeyboard::TestKeyboard(std::unique_ptr<X11Connection> connection)
    : m_connection(std::move(connection)),
      m_firstEvent(m_connection->extension(xcb_input_id)->first_event) {}

std::unique_ptr<TestKeyboard> TestKeyboard::builtIn() {
  std::unique_ptr<TestKeyboard> keyboard(new TestKeyboard(X11Connection::create()));
  auto input = X11RawInput::create(*keyboard->m_connection);
  const auto keyboards = input->keyboards();
  for (const auto& candidate : *keyboards) {
    if (!candidate.isVirtual) keyboard->m_id = candidate.id;
  }
  return keyboard->m_id ? std::move(keyboard) : nullptr;
}

std::unique_ptr<TestKeyboard> TestKeyboard::plugIn() {
  std::unique_ptr<TestKeyboard> keyboard(new TestKeyboard(X11Connection::create()));
  X11Connection& connection = *keyboard->m_connection;
  if (!X11RawInput::create(connection)) return nullptr;
  changeHierarchy(connection, AddMaster());
  keyboard->m_master =
      findDevice(connection, XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD, "Test keyboard");
  keyboard->m_id =
      findDevice(connection, XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD, "Test XTEST keyboard");
  return keyboard->m_id ? std::move(keyboard) : nullptr;
}

TestKeyboard::~TestKeyboard() {
  for (const xcb_keycode_t code : std::set(m_held)) release(code);
  if (m_isDetached) attach(true);
  if (m_master)
    unplug();
  else
    switchOn(true);
}

void TestKeyboard::press(xcb_keycode_t code) {
  m_held.insert(code);
  strike(XCB_INPUT_DEVICE_KEY_PRESS, code);
}

void TestKeyboard::release(xcb_keycode_t code) {
  m_held.erase(code);
  strike(XCB_INPUT_DEVICE_KEY_RELEASE, code);
}

void TestKeyboard::strike(std::uint8_t eventOffset, xcb_keycode_t code) {
  xcb_test_fake_input(m_connection->xcb(), m_firstEvent + eventOffset, code, XCB_CURRENT_TIME,
                      XCB_NONE, 0, 0, static_cast<std::uint8_t>(m_id));
  m_connection->synchronize();
}

void TestKeyboard::switchOn(bool isOn) {
  // Padded, as the library sends whole words.
  const std::uint8_t value[4] = {isOn};
  xcb_input_xi_change_property(m_connection->xcb(), m_id, XCB_PROP_MODE_REPLACE, 8,
                               m_connection->atom("Device Enabled"), XCB_ATOM_INTEGER, 1, value);
  m_connection->synchronize();
}

void TestKeyboard::attach(bool isAttached) {
  if (isAttached)
    changeHierarchy(*m_connection, AttachSlave{.device = m_id});
  else
    changeHierarchy(*m_connection, DetachSlave{.device = m_id});
  m_isDetached = !isAttached;
}

void TestKeyboard::unplug() {
  if (m_master) changeHierarchy(*m_connection, RemoveMaster{.master = std::exchange(m_master, 0)});
  m_held.clear();
}

}  // namespace vemo
