// An i2c adapter that umockdev stands in for, with a simulated supply on it.
#include "tests/linux/FakeAdapter.h"

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "agent/Text.h"

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

std::string hexOf(Kex::U8 const* bytes, std::size_t length) { return Agent::hex({bytes, length}); }

Smbus::Transaction transactionOf(Kex::U8 command, Kex::U8 const* write, std::size_t length) {
  Smbus::Transaction transaction;
  transaction.address.deviceIs(Smbus::U7(0x58));
  transaction.address.offsetIs(command);
  std::copy_n(write, length, transaction.write.bytes.begin());
  transaction.write.length = static_cast<Kex::U8>(length);
  transaction.readLength = Smbus::kMaxBlock;
  return transaction;
}

}  // namespace

class FakeAdapter::Line {
 public:
  explicit Line(Behaviour const& behaviour) : behaviour_(behaviour) {}

  void behaviourIs(Behaviour const& behaviour);
  std::vector<std::string> transfers();
  void awaitHang();
  void release();
  void serve(UMockdevIoctlClient* client);

 private:
  /// What the supply answers, as the adapter delivers it.
  std::optional<Smbus::Block> answer(Smbus::Transaction const& transaction) const;
  /// Each returns the ioctl's result, below 0 for an errno value.
  int transferSmbus(UMockdevIoctlData* argument);
  int transferMessages(UMockdevIoctlData* argument);

  std::mutex mutex_;
  std::condition_variable changed_;
  Behaviour behaviour_;
  std::vector<std::string> transfers_;
  UMockdevIoctlClient* hanging_ = nullptr;
};

void FakeAdapter::Line::behaviourIs(Behaviour const& behaviour) {
  std::scoped_lock const lock(mutex_);
  behaviour_ = behaviour;
}

std::vector<std::string> FakeAdapter::Line::transfers() {
  std::scoped_lock const lock(mutex_);
  return transfers_;
}

void FakeAdapter::Line::awaitHang() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return hanging_ != nullptr; });
}

void FakeAdapter::Line::release() {
  std::scoped_lock const lock(mutex_);
  Owned<UMockdevIoctlClient> const client(std::exchange(hanging_, nullptr));
  umockdev_ioctl_client_complete(client.get(), -1, ETIMEDOUT);
}

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
    hanging_ = static_cast<UMockdevIoctlClient*>(g_object_ref(client));
    changed_.notify_all();
    return;
  }
  umockdev_ioctl_client_complete(client, result < 0 ? -1 : result, result < 0 ? -result : 0);
}

std::optional<Smbus::Block> FakeAdapter::Line::answer(Smbus::Transaction const& transaction) const {
  constexpr Kex::U8 kImage[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  Smbus::Reply reply = Agent::SimulatedSupply(kImage, "EMERSON").answer(transaction);
  reply.read.bytes[0] = behaviour_.count.value_or(reply.read.bytes[0]);
  return reply.isOk ? std::optional(reply.read) : std::nullopt;
}

int FakeAdapter::Line::transferSmbus(UMockdevIoctlData* argument) {
  auto const call = resolved(argument, 0, sizeof(i2c_smbus_ioctl_data));
  auto const wanted = valueOf<i2c_smbus_ioctl_data>(*call);
  auto const data =
      resolved(call.get(), offsetof(i2c_smbus_ioctl_data, data), sizeof(i2c_smbus_data));
  bool const isRead = wanted.size == I2C_SMBUS_BLOCK_DATA && wanted.read_write == I2C_SMBUS_READ;
  std::size_t const written = isRead ? 0 : data->data[0] + 1U;
  transfers_.push_back("smbus " + (isRead ? "read" : "call " + std::to_string(wanted.size)) + " " +
                       hexOf(&wanted.command, 1) + " " + hexOf(data->data, written));
  if (behaviour_.hangs || behaviour_.transferError != 0) {
    return behaviour_.hangs ? -EINPROGRESS : -behaviour_.transferError;
  }
  auto const reply = answer(transactionOf(wanted.command, data->data, written));
  if (!reply) {
    return -ENXIO;
  }
  umockdev_ioctl_data_update(data.get(), 0, const_cast<Kex::U8*>(reply->bytes.data()),
                             Smbus::kMaxBlock);
  return 0;
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
    auto const device = static_cast<Kex::U8>(message.addr);
    text += (text.empty() ? "" : " ") + hexOf(&device, 1) +
            (message.flags == 0 ? "<" + hexOf(data.back()->data, message.len)
                                : ">" + std::to_string(message.len)) +
            (message.flags > I2C_M_RD ? " with flags" : "");
  }
  transfers_.push_back(text);
  if (behaviour_.hangs || behaviour_.transferError != 0) {
    return behaviour_.hangs ? -EINPROGRESS : -behaviour_.transferError;
  }
  Kex::U8 const* const sent = data[0]->data;
  auto const reply = answer(transactionOf(sent[0], sent + 1, messages[0].len - 1U));
  if (!reply) {
    return -ENXIO;
  }
  // Nobody drives the line beyond the reply.
  std::vector<Kex::U8> bytes(messages[1].len, 0xFF);
  std::copy_n(reply->bytes.begin(), std::min<std::size_t>(reply->length, bytes.size()),
              bytes.begin());
  umockdev_ioctl_data_update(data[1].get(), 0, bytes.data(), messages[1].len);
  return behaviour_.messages;
}

FakeAdapter::FakeAdapter(UMockdevTestbed* bed, unsigned number, Behaviour const& behaviour)
    : bed_(bed), line_(std::make_shared<Line>(behaviour)), handler_(umockdev_ioctl_base_new()) {
  std::string const name = "i2c-" + std::to_string(number);
  node_ = "/dev/" + name;
  std::string const description = "P: /devices/" + name + "\nN: " + name + "\nE: DEVNAME=" + node_ +
                                  "\nE: SUBSYSTEM=i2c\nA: name=fake " + name + "\\n\n";
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

void FakeAdapter::behaviourIs(Behaviour const& behaviour) { line_->behaviourIs(behaviour); }
std::vector<std::string> FakeAdapter::transfers() { return line_->transfers(); }
void FakeAdapter::awaitHang() { line_->awaitHang(); }
void FakeAdapter::release() { line_->release(); }

}  // namespace linuxTest
