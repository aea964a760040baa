// The plug-in: loaded, and everything in it created by type name.
#pragma once

#include <string>
#include <vector>

#include "host/detector/IdentifierFactoryBase.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"

namespace Agent {

/// A loaded plug-in. Its descriptors stand in the host's registry, its identifier factory at the
/// root, each under its type's short name. What it brought stays for the life of the process.
class Plugin {
 public:
  using FactoryPtr = Kex::Ptr<PowerSupplyDetector::IdentifierFactoryBase>;

  /// The plug-in beside the program, as built, or in the library folder, as installed.
  static std::string defaultFile();

  /// Loads `file`, with introspection listening, if it is not loaded yet, and creates nothing of
  /// it; the full names of its types. Throws a `Failure` naming the file when it is no plug-in or
  /// cannot be loaded.
  static std::vector<std::string> load(std::string const& file);

  /// Loads `file` and creates what it brings. Throws as `load`, and a `Failure` when it does not
  /// bring what it says it does.
  explicit Plugin(std::string const& file);

  /// The records of the types that the plug-in brings, in registration order.
  std::vector<Kex::KexType const*> const& types() const { return types_; }
  FactoryPtr const& factory() const { return factory_; }

 private:
  void create(Kex::KexType const& type);

  std::string file_;
  std::vector<Kex::KexType const*> types_;
  FactoryPtr factory_;
};

}  // namespace Agent
