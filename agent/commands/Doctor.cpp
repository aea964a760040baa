// psu-agent doctor: whether an i2c adapter can serve.
#include "agent/commands/Command.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

#include "agent/base/Ledger.h"
#include "agent/base/Text.h"
#include "agent/transport/LinuxAdapter.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

constexpr Kex::U8 kDevice = 0x58;
constexpr char const* kDevices = "/sys/bus/i2c/devices/";

/// What the kernel calls the adapter, in quotes; `-` when it does not say.
std::string adapterName(unsigned number) {
  std::ifstream in(kDevices + linuxBusName(number) + "/name");
  std::string name;
  return std::getline(in, name) ? inQuotes(name) : "-";
}

/// The driver that holds the address, where the kernel names it.
std::string driverName(unsigned number) {
  std::string const device = Kex::format("%s%u-%04x/driver", kDevices, number, kDevice).charPtr();
  std::error_code error;
  auto const driver = std::filesystem::read_symlink(device, error);
  return error ? "" : " " + inQuotes(driver.filename().string());
}

/// Tells of the bus in one line.
Status examine(unsigned number) {
  LinuxAdapter const adapter(number);
  bool const isHeld = adapter.isHeld(kDevice);
  LinuxWay const way = adapter.way();
  bool const canServe = !isHeld && way != LinuxWay::none;
  std::string const can = usefulFunctions(adapter.functions(), true);
  std::cout << linuxBusName(number) << ": " << adapterName(number)
            << Kex::format("; functions 0x%08lx, of use: ", adapter.functions())
            << (can.empty() ? "none" : can) << "; way: " << nameOf(way)
            << (way == LinuxWay::none ? ", it lacks " + usefulFunctions(adapter.functions(), false)
                                      : "")
            << Kex::format("; address 0x%02x: ", kDevice)
            << (isHeld ? "held by the kernel driver" + driverName(number) : "free")
            << "; recognition " << (canServe ? "can" : "cannot") << " work\n";
  return canServe ? Status::ok : Status::notIdentified;
}

Status doctor(std::vector<std::string> const& sources) {
  constexpr std::string_view kPrefix = "i2c:";
  std::vector<unsigned> numbers;
  for (std::string const& source : sources) {
    if (!source.starts_with(kPrefix)) {
      throw UsageError("doctor: " + oneLine(source) + " is not i2c:N");
    }
    numbers.push_back(linuxBusNumber(source.substr(kPrefix.size())));
  }
  Ledger ledger;
  for (unsigned const number : numbers) {
    ledger.attempt([&] { ledger.add(examine(number)); });
  }
  return ledger.status();
}

}  // namespace

Action prepareDoctor(CLI::App& command) {
  auto const sources = std::make_shared<std::vector<std::string>>();
  command.add_option("SOURCE", *sources, "i2c:N or i2c:/dev/i2c-N")->required();
  return [sources](Globals const&) { return doctor(*sources); };
}

}  // namespace Agent
