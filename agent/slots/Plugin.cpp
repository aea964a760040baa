// The plug-in: loaded, and everything in it created by type name.
#include "agent/slots/Plugin.h"

#include <dlfcn.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <system_error>

#include "agent/base/Error.h"
#include "agent/base/ExitStatus.h"
#include "agent/slots/TypeSection.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/type/Introspection.h"

namespace Agent {

namespace {

using Descriptor = Ipmi::SupportedPowerSupplyDescriptorBase;
using Factory = PowerSupplyDetector::IdentifierFactoryBase;

/// Listens, so that types declare their schemas to their records, and keeps nothing else.
class Listener final : public Kex::IntrospectionTarget {
 public:
  Listener() { Kex::IntrospectionReactor::global().targetIs(this); }
  Listener(Listener const&) = delete;
  Listener& operator=(Listener const&) = delete;
  ~Listener() override { Kex::IntrospectionReactor::global().targetIs(nullptr); }

  void handleNameSpace(Kex::Name const&) override {}
  void handleType(Kex::KexType&, Kex::KexType*) override {}
  void handleAttr(Kex::KexAttr&) override {}
  void handleAttrContextExit() override {}
  void handleScopeExit() override {}
};

/// While it lives, an exception that nobody catches ends the program as a failure to load `file`.
/// What an initialiser of a library throws can be caught nowhere: it does not get past the C
/// library, which runs the initialisers.
class LoadGuard {
 public:
  explicit LoadGuard(std::string const& file) : previous_(std::set_terminate(&end)) {
    file_ = &file;
  }
  LoadGuard(LoadGuard const&) = delete;
  LoadGuard& operator=(LoadGuard const&) = delete;
  ~LoadGuard() { std::set_terminate(previous_); }

 private:
  [[noreturn]] static void end() {
    complain(*file_ + ": cannot be loaded: " + exceptionText(std::current_exception()));
    std::_Exit(static_cast<int>(Status::failed));
  }

  static inline std::string const* file_ = nullptr;
  std::terminate_handler previous_;
};

void loadLibrary(std::string const& file) {
  Listener const listener;
  LoadGuard const guard(file);
  // A name without a slash would be looked for in the system's folders.
  std::string const path = std::filesystem::absolute(file);
  if (::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL) == nullptr) {
    throw Failure(file + ": cannot be loaded: " + ::dlerror());
  }
}

/// An object of `type`, named after it, made by the type's generic construction.
template <class T>
Kex::Ptr<T> newObject(Kex::KexType const& type) {
  auto const arguments = Kex::make<Kex::GenericIf::List_>();
  arguments->append(Kex::holderOf(type.name()));
  return Kex::dynamicCast<T>(type.genericIf(arguments.ptr(), false)->castTo(T::_fwkType()));
}

}  // namespace

std::string Plugin::defaultFile() {
  std::error_code error;
  auto const folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  auto const asBuilt = folder / PSU_PLUGIN_FILE;
  auto const asInstalled =
      (folder / PSU_PLUGINDIR_FROM_BINDIR / PSU_PLUGIN_FILE).lexically_normal();
  return std::filesystem::exists(asBuilt, error) || !std::filesystem::exists(asInstalled, error)
             ? asBuilt
             : asInstalled;
}

std::vector<std::string> Plugin::load(std::string const& file) {
  std::vector<std::string> names = readTypeSection(file);
  loadLibrary(file);
  return names;
}

Plugin::Plugin(std::string const& file) : file_(file) {
  for (std::string const& name : load(file_)) {
    Kex::KexType const* const type = Kex::KexType::typeNode(Kex::Name(Kex::String8(name)));
    if (type == nullptr) {
      throw Failure(file_ + ": names the type " + name + " but does not register it");
    }
    types_.push_back(type);
    try {
      create(*type);
    } catch (Kex::Exception const&) {
      throw Failure(file_ + ": cannot create a " + name + ": " +
                    exceptionText(std::current_exception()));
    }
  }
  if (!factory_) {
    throw Failure(file_ + ": brings no identifier factory");
  }
}

void Plugin::create(Kex::KexType const& type) {
  if (type.isA(Descriptor::_fwkType())) {
    Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>()->powerSupplyDescriptorIs(
        newObject<Descriptor>(type));
  } else if (type.isA(Factory::_fwkType())) {
    factory_ = newObject<Factory>(type);
    Kex::root().memberIs(factory_);
  }
}

}  // namespace Agent
