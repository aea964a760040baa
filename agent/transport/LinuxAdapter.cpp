// An i2c adapter of this machine, through the kernel's i2c-dev interface.
#include "agent/transport/LinuxAdapter.h"

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "agent/base/Text.h"
#include "host/kex/base/Format.h"

namespace Agent {

using Smbus::ErrorKind;

namespace {

struct Function {
  unsigned long bit;
  std::string_view name;
};

constexpr Function kUseful[] = {
    {I2C_FUNC_SMBUS_READ_BLOCK_DATA, "SMBus block read"},
    {I2C_FUNC_SMBUS_BLOCK_PROC_CALL, "SMBus block process call"},
    {I2C_FUNC_I2C, "plain I2C"},
};

struct Way {
  LinuxWay way;
  unsigned long needs;
  std::string_view name;
};

// In the order in which they are preferred.
constexpr Way kWays[] = {
    {LinuxWay::smbus, I2C_FUNC_SMBUS_READ_BLOCK_DATA | I2C_FUNC_SMBUS_BLOCK_PROC_CALL,
     "SMBus block calls"},
    {LinuxWay::plainI2c, I2C_FUNC_I2C, "plain I2C transfers"},
    {LinuxWay::none, 0, "none"},
};

struct Meaning {
  int error;
  ErrorKind kind;
  std::string_view text;
};

constexpr Meaning meant(int error, ErrorKind kind) {
  return {.error = error, .kind = kind, .text = Smbus::rowOf(kind).text};
}

// What the kernel's i2c drivers mean by the error numbers that they agree on.
constexpr Meaning kMeanings[] = {
    meant(EAGAIN, ErrorKind::arbitrationLost),
    {EBADMSG, ErrorKind::other, "wrong packet error code"},
    meant(EBUSY, ErrorKind::busBusy),
    meant(ENODEV, ErrorKind::busGone),
    meant(ENXIO, ErrorKind::noAcknowledge),
    meant(EOPNOTSUPP, ErrorKind::unsupported),
    meant(EPROTO, ErrorKind::badCount),
    meant(EREMOTEIO, ErrorKind::noAcknowledge),
    {ESHUTDOWN, ErrorKind::other, "the adapter is suspended"},
    meant(ETIMEDOUT, ErrorKind::timeout),
};
// The same where an address is selected, as far as it differs.
constexpr Meaning kSelectMeaning = meant(EBUSY, ErrorKind::addressHeld);

BusFailure failureOf(Meaning const& meaning, std::string const& before = {}) {
  std::string const text =
      meaning.text.empty() ? systemError(meaning.error) : std::string(meaning.text);
  char const* const name = strerrorname_np(meaning.error);
  return {meaning.kind,
          before + text + " (" + (name != nullptr ? name : std::to_string(meaning.error)) + ")"};
}

/// What the error number means; `before` stands before the text.
BusFailure failureOf(int error, std::string const& before = {}) {
  auto const* const found = std::ranges::find(kMeanings, error, &Meaning::error);
  return failureOf(found != std::end(kMeanings)
                       ? *found
                       : Meaning{.error = error, .kind = ErrorKind::other, .text = {}},
                   before);
}

/// Why a bus cannot be opened. One that is not there has gone, or has not come yet.
BusFailure cannotOpen(LinuxNode const& node, int error) {
  bool const isGone = error == ENOENT || error == ENODEV || error == ENXIO;
  std::string const hint =
      linuxAdapter(node.number) ? "modprobe i2c-dev makes the nodes" : linuxAdaptersText();
  return {isGone ? ErrorKind::busGone : ErrorKind::other,
          linuxBusName(node.number) + ": cannot open " + node.path + ": " + systemError(error) +
              (isGone ? "; " + hint : "")};
}

}  // namespace

LinuxWay wayOf(unsigned long functions) {
  return std::ranges::find_if(
             kWays, [functions](Way const& way) { return (functions & way.needs) == way.needs; })
      ->way;
}

std::string_view nameOf(LinuxWay way) { return std::ranges::find(kWays, way, &Way::way)->name; }

std::string usefulFunctions(unsigned long functions, bool present) {
  std::string names;
  for (Function const& function : kUseful) {
    if (((functions & function.bit) != 0) == present) {
      names += (names.empty() ? "" : ", ") + std::string(function.name);
    }
  }
  return names;
}

void checkCarriedOut(int done, unsigned messages) {
  if (done < 0) {
    throw failureOf(-done);
  }
  if (static_cast<unsigned>(done) != messages) {
    throw BusFailure(ErrorKind::other, "the adapter carried out " + std::to_string(done) + " of " +
                                           std::to_string(messages) + " messages");
  }
}

Smbus::Reply linuxReply(unsigned number, Smbus::Transaction const& transaction,
                        std::function<Smbus::Block()> const& transfer) {
  try {
    Smbus::Block read = transfer();
    Kex::U8 const count = read.bytes[0];
    if (count >= Smbus::kMaxBlock) {
      throw BusFailure(ErrorKind::badCount,
                       "bad count byte: " + std::to_string(count) + ", where 32 is the most");
    }
    read.length = std::min(static_cast<Kex::U8>(count + 1), transaction.readLength);
    std::fill(read.bytes.begin() + read.length, read.bytes.end(), Kex::U8{0});
    return {.isOk = true, .read = read, .failure = {}};
  } catch (BusFailure const& failure) {
    return Smbus::Reply::failed(failure.kind(),
                                Kex::format("%s, device 0x%02x: %s", linuxBusName(number).c_str(),
                                            transaction.address.device(), failure.what()));
  }
}

LinuxAdapter::LinuxAdapter(LinuxNode const& node)
    : number_(node.number), file_(open(node.path.c_str(), O_RDWR | O_CLOEXEC)) {
  if (file_ < 0) {
    throw cannotOpen(node, errno);
  }
  if (ioctl(file_, I2C_FUNCS, &functions_) < 0) {
    int const error = errno;
    close(file_);
    throw failureOf(error, linuxBusName(number_) + ": does not tell what it can do: ");
  }
}

LinuxAdapter::~LinuxAdapter() { close(file_); }

void LinuxAdapter::checkWay() const {
  if (way() == LinuxWay::none) {
    throw BusFailure(ErrorKind::unsupported, linuxBusName(number_) +
                                                 ": the adapter cannot serve: it lacks " +
                                                 usefulFunctions(functions_, false));
  }
}

int LinuxAdapter::select(Kex::U8 device) const {
  return ioctl(file_, I2C_SLAVE, static_cast<unsigned long>(device)) < 0 ? errno : 0;
}

bool LinuxAdapter::isHeld(Kex::U8 device) const {
  int const error = select(device);
  if (error != 0 && error != EBUSY) {
    throw failureOf(error, linuxBusName(number_) + ": cannot address a device: ");
  }
  return error == EBUSY;
}

Smbus::Reply LinuxAdapter::transfer(Smbus::Transaction const& transaction) const {
  checkWay();
  return linuxReply(number_, transaction, [&] {
    if (int const error = select(transaction.address.device()); error != 0) {
      throw error == EBUSY ? failureOf(kSelectMeaning) : failureOf(error);
    }
    return way() == LinuxWay::smbus ? transferSmbus(transaction) : transferPlainI2c(transaction);
  });
}

Smbus::Block LinuxAdapter::transferSmbus(Smbus::Transaction const& transaction) const {
  i2c_smbus_data data{};
  bool const isProcessCall = transaction.write.length != 0;
  std::ranges::copy(transaction.write.view(), data.block);
  i2c_smbus_ioctl_data call;
  std::memset(&call, 0, sizeof call);
  call.read_write = isProcessCall ? I2C_SMBUS_WRITE : I2C_SMBUS_READ;
  call.command = transaction.address.offset();
  call.size = isProcessCall ? I2C_SMBUS_BLOCK_PROC_CALL : I2C_SMBUS_BLOCK_DATA;
  call.data = &data;
  if (ioctl(file_, I2C_SMBUS, &call) < 0) {
    throw failureOf(errno);
  }
  Smbus::Block read;
  std::copy_n(data.block, read.bytes.size(), read.bytes.begin());
  return read;
}

Smbus::Block LinuxAdapter::transferPlainI2c(Smbus::Transaction const& transaction) const {
  std::array<Kex::U8, Smbus::kMaxBlock + 1> sent{transaction.address.offset()};
  std::ranges::copy(transaction.write.view(), sent.begin() + 1);
  Smbus::Block read;
  std::array<i2c_msg, 2> messages{};
  messages[0] = {.addr = transaction.address.device(),
                 .flags = 0,
                 .len = static_cast<__u16>(transaction.write.length + 1),
                 .buf = sent.data()};
  messages[1] = {.addr = transaction.address.device(),
                 .flags = I2C_M_RD,
                 .len = transaction.readLength,
                 .buf = read.bytes.data()};
  i2c_rdwr_ioctl_data call;
  std::memset(&call, 0, sizeof call);
  call.msgs = messages.data();
  call.nmsgs = messages.size();
  int const done = ioctl(file_, I2C_RDWR, &call);
  checkCarriedOut(done < 0 ? -errno : done, call.nmsgs);
  return read;
}

}  // namespace Agent
