// The smallest host of the plug-in: minimal-host PLUGIN IMAGE prints the FDL of one supply.
#include <dlfcn.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

#include "host/detector/IdentifierFactoryBase.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/time/ActivityManager.h"

namespace {

/// The way to the supply. This one serves a FRU image; yours talks to your bus. The answer must not
/// be given from inside start(), so it is queued as an activity of the run loop.
class ImageTransport final : public Smbus::Transport, private Kex::Activity {
 public:
  explicit ImageTransport(std::string image) : image_(std::move(image)) { image_.resize(256); }

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override {
    bool const isFru = transaction.address.offset() == 0xB0;
    std::string block = isFru ? '\x10' + (image_ + image_).substr(transaction.write.bytes[1], 16)
                              : "\x07"
                                "EMERSON";
    reply_ = {.isOk = true, .read = {}, .failure = {}};
    std::ranges::copy(block, reply_.read.bytes.begin());
    reply_.read.length = static_cast<Kex::U8>(block.size());
    ticket_ = ticket;
    sink_ = &sink;
    enqueue();
  }

 private:
  void run() override { sink_->answerIs(ticket_, reply_); }

  std::string image_;
  Smbus::Reply reply_;
  Kex::U64 ticket_ = 0;
  Smbus::AnswerSink* sink_ = nullptr;
};

/// An object of the type of this full name, made without knowing its class.
template <class T>
Kex::Ptr<T> create(char const* typeName) {
  auto const arguments = Kex::make<Kex::GenericIf::List_>();
  arguments->append(Kex::holderOf(Kex::Name(typeName)));
  auto const made = Kex::KexType::typeNode(typeName)->genericIf(arguments.ptr(), false);
  return Kex::dynamicCast<T>(made->castTo(T::_fwkType()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 || dlopen(argv[1], RTLD_NOW) == nullptr) {
    std::cerr << (argc != 3 ? "usage: minimal-host PLUGIN IMAGE" : dlerror()) << '\n';
    return 2;
  }
  auto const registry = Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  for (char const* const type : {"DS2900", "DS3000", "DS500"}) {  // as many as you support
    registry->powerSupplyDescriptorIs(create<Ipmi::SupportedPowerSupplyDescriptorBase>(
        ("Emerson::IpmiIdentifier::" + std::string(type)).c_str()));
  }
  auto const factory = create<PowerSupplyDetector::IdentifierFactoryBase>(
      "Emerson::PmbusIdentifier::IdentifierFactory");

  std::ifstream file(argv[2], std::ios::binary);
  std::string const image{std::istreambuf_iterator<char>(file), {}};
  auto const bus = Kex::make<Smbus::Bus>(std::make_unique<ImageTransport>(image));
  Kex::Name const name("PowerSupply1");
  auto const access = Kex::make<SmbusVorn::VornDesc>(Kex::make<Hardware::Vorn>(bus));
  auto const status = Kex::make<Hardware::PowerSupplySlot::SlotStatus>(name);
  auto const driver = Kex::make<PowerSupplyDetector::SlotDriver>(name);
  factory->doAddIdentifierToDriver(driver,
                                   Kex::make<Hardware::PowerSupplySlot::SlotConfig>(name, access),
                                   Kex::make<Hardware::PowerSupply::CellConfig>(name), status);

  Kex::activityManager().runUntil(1.0);  // a live host steps the clock itself: Clock::timeIs
  auto const& supply = status->supply();
  if (!supply || supply->fdl.empty()) {
    std::cerr << argv[2] << ": " << (supply ? supply->reason : "no outcome") << '\n';
    return 1;
  }
  std::cout << supply->fdl;
}
