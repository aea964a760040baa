// An i2c adapter that umockdev stands in for, with a simulated supply on it.
#include "tests/linux/FakeAdapter.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "tests/unit/agent_transport.h"

namespace linuxTest {

namespace {

/// What the pointer at `offset` of `data` leads to.
Owned<UMockdevIoctlData> resolved(UMockdevIoctlData* data, std::size_t offset, std::size_t length) {
  GError* error = nullptr;
  Owned<UMockdevIoctlData> found(umockdev_ioctl_data_resolve(data, offset, length, &error));
  if (!found) {
    throw std::runtime_error(error->message);
  }
  return found;
}

template <class T>
T valueOf(UMockdevIoctlData const& data) {
  T value;
  std::memcpy(&value, data.data, sizeof value);
  return value;
}

/// The transaction of which `sent` follows the device's address.
Smbus::Transaction transactionOf(std::span<Kex::U8 const> sent) {
  Smbus::Block write;
  std::ranges::copy(sent.subspan(1), write.bytes.begin());
  write.length = static_cast<Kex::U8>(sent.size() - 1);
  return {agentTest::address(0x58, sent[0]), write, Smbus::kMaxBlock};
}

}  // namespace

class FakeAdapter::Line {
 public:
  explicit Line(Behaviour const& behaviour) : behaviour_(behaviour) {}

  void behaviourIs(Behaviour const& behaviour) {
    std::scoped_lock const lock(mutex_);
    behaviour_ = behaviour;
  }
  std::vector<std::string> transfers() {
    std::scoped_lock const lock(mutex_);
    return transfers_;
  }
  void awaitHang() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return hanging_ != nullptr; });
  }
  void release() {
    std::scoped_lock const lock(mutex_);
    umockdev_ioctl_client_complete(std::exchange(hanging_, nullptr).get(), -1, ETIMEDOUT);
  }
  void serve(UMockdevIoctlClient* client);

 private:
  /// Each returns the ioctl's result, below 0 for an errno value.
  int transferSmbus(UMockdevIoctlData* argument);
  int transferMessages(UMockdevIoctlData* argument);
  /// Notes a transfer and reads what the supply answers, as the adapter delivers it.
  int transfer(std::string const& text, std::span<Kex::U8 const> sent, Smbus::Block& read);

  std::mutex mutex_;
  std::condition_variable changed_;
  Behaviour behaviour_;
  std::vector<std::string> transfers_;
  Owned<UMockdevIoctlClient> hanging_;
};

void FakeAdapter::Line::serve(UMockdevIoctlClient* client) {
  std::scoped_lock const lock(mutex_);
  UMockdevIoctlData* const argument = umockdev_ioctl_client_get_arg(client);
  int result = -ENOTTY;
  switch (umockdev_ioctl_client_get_request(client)) {
    case I2C_FUNCS: {
      auto const functions = resolved(argument, 0, sizeof behaviour_.functions);
      std::memcpy(functions->data, &behaviour_.functions, sizeof behaviour_.functions);
      result = 0;
      break;
    }
    case I2C_SLAVE: result = -behaviour_.slaveError; break;
    case I2C_SMBUS: result = transferSmbus(argument); break;
    case I2C_RDWR: result = transferMessages(argument); break;
    default: break;
  }
  if (result == -EINPROGRESS) {
    hanging_.reset(static_cast<UMockdevIoctlClient*>(g_object_ref(client)));
    changed_.notify_all();
    return;
  }
  umockdev_ioctl_client_complete(client, result < 0 ? -1 : result, result < 0 ? -result : 0);
}

int FakeAdapter::Line::transfer(std::string const& text, std::span<Kex::U8 const> sent,
                                Smbus::Block& read) {
  constexpr Kex::U8 kImage[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  transfers_.push_back(text);
  if (behaviour_.hangs || behaviour_.transferError != 0) {
    return behaviour_.hangs ? -EINPROGRESS : -behaviour_.transferError;
  }
  auto const reply = Agent::SimulatedSupply(kImage, "EMERSON").answer(transactionOf(sent));
  read = reply.read;
  read.bytes[0] = behaviour_.count.value_or(read.bytes[0]);
  return reply.isOk ? 0 : -ENXIO;
}

int FakeAdapter::Line::transferSmbus(UMockdevIoctlData* argument) {
  auto const call = resolved(argument, 0, sizeof(i2c_smbus_ioctl_data));
  auto const wanted = valueOf<i2c_smbus_ioctl_data>(*call);
  auto const data =
      resolved(call.get(), offsetof(i2c_smbus_ioctl_data, data), sizeof(i2c_smbus_data));
  bool const isRead = wanted.size == I2C_SMBUS_BLOCK_DATA && wanted.read_write == I2C_SMBUS_READ;
  std::vector<Kex::U8> sent(data->data, data->data + (isRead ? 0 : data->data[0] + 1));
  sent.insert(sent.begin(), wanted.command);
  Smbus::Block read;
  int const result = transfer(
      "smbus " + (isRead ? "read" : "call " + std::to_string(wanted.size)) + " " + Agent::hex(sent),
      sent, read);
  if (result == 0) {
    umockdev_ioctl_data_update(data.get(), 0, read.bytes.data(), Smbus::kMaxBlock);
  }
  return result;
}

int FakeAdapter::Line::transferMessages(UMockdevIoctlData* argument) {
  auto const call = resolved(argument, 0, sizeof(i2c_rdwr_ioctl_data));
  auto const count = valueOf<i2c_rdwr_ioctl_data>(*call).nmsgs;
  auto const list =
      resolved(call.get(), offsetof(i2c_rdwr_ioctl_data, msgs), count * sizeof(i2c_msg));
  std::vector<i2c_msg> messages(count);
  std::memcpy(messages.data(), list->data, count * sizeof(i2c_msg));
  std::vector<Owned<UMockdevIoctlData>> data;
  std::string text;
  for (i2c_msg const& message : messages) {
    std::size_t const at = data.size() * sizeof(i2c_msg) + offsetof(i2c_msg, buf);
    data.push_back(resolved(list.get(), at, message.len));
    Kex::U8 const device[] = {static_cast<Kex::U8>(message.addr)};
    text += (text.empty() ? "" : " ") + Agent::hex(device) +
            (message.flags == 0 ? "<" + Agent::hex({data.back()->data, message.len})
                                : ">" + std::to_string(message.len)) +
            (message.flags > I2C_M_RD ? " with flags" : "");
  }
  Smbus::Block read;
  if (int const result = transfer(text, {data[0]->data, messages[0].len}, read); result != 0) {
    return result;
  }
  // Nobody drives the line beyond the reply.
  std::fill(read.bytes.begin() + read.length, read.bytes.end(), Kex::U8{0xFF});
  umockdev_ioctl_data_update(data[1].get(), 0, read.bytes.data(),
                             std::min<__u16>(messages[1].len, Smbus::kMaxBlock));
  return behaviour_.messages;
}

FakeAdapter::FakeAdapter(UMockdevTestbed* bed, unsigned number, Behaviour const& behaviour)
    : bed_(bed), line_(std::make_shared<Line>(behaviour)), handler_(umockdev_ioctl_base_new()) {
  std::string const name = "i2c-" + std::to_string(number);
  node_ = "/dev/" + name;
  std::string const description = "P: /devices/" + name + "\nN: " + name + "\nE: DEVNAME=" + node_ +
                                  "\nE: SUBSYSTEM=i2c\nA: dev=89:" + std::to_string(number) +
                                  "\nA: name=fake " + name + "\\n\n";
  using Held = std::shared_ptr<Line>;
  GError* error = nullptr;
  g_signal_connect_data(
      handler_.get(), "handle-ioctl",
      G_CALLBACK(+[](UMockdevIoctlBase*, UMockdevIoctlClient* client, Held* line) -> gboolean {
        (*line)->serve(client);
        return TRUE;
      }),
      new Held(line_), [](gpointer line, GClosure*) { delete static_cast<Held*>(line); },
      GConnectFlags{});
  if (!umockdev_testbed_add_from_string(bed, description.c_str(), &error) ||
      !umockdev_testbed_attach_ioctl(bed, node_.c_str(), handler_.get(), &error)) {
    throw std::runtime_error(error->message);
  }
}

FakeAdapter::~FakeAdapter() { umockdev_testbed_detach_ioctl(bed_, node_.c_str(), nullptr); }

void FakeAdapter::nameIs(std::string const& name) {
  umockdev_testbed_set_attribute(bed_, ("/sys/devices/" + node_.substr(5)).c_str(), "name",
                                 (name + '\n').c_str());
}
void FakeAdapter::behaviourIs(Behaviour const& behaviour) { line_->behaviourIs(behaviour); }
std::vector<std::string> FakeAdapter::transfers() { return line_->transfers(); }
void FakeAdapter::awaitHang() { line_->awaitHang(); }
void FakeAdapter::release() { line_->release(); }

}  // namespace linuxTest
