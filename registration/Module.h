// A module's types: their records, the declaration of their schemas, their registration.
#pragma once

#include <span>

#include "host/tables/TypeTable.h"

namespace Emerson::Registration {

using Tables::RecordFn;

/// One type of a module.
struct ModuleType {
  Tables::TypeTable const* table;
  RecordFn record;
  /// Where the handles of the type's own declared attributes are kept, one a declared row in the
  /// rows' order; null where the schema was not declared when the library was loaded.
  std::span<Kex::KexAttr*> handles;
};

/// The types that are registered together. All of it is constant-initialised: a record may be asked
/// for before any initialiser of the library has run.
class Module {
 public:
  /// `types` in the order of registration; `fetchOrder`: all records of the module and those of
  /// their bases, in the order in which the type-definition pass fetches them.
  constexpr Module(char const* nameSpace, std::span<ModuleType const> types,
                   std::span<RecordFn const> fetchOrder)
      : nameSpace_(nameSpace), types_(types), fetchOrder_(fetchOrder) {}
  Module(Module const&) = delete;
  Module& operator=(Module const&) = delete;

  /// The type-definition pass: declares the schemas of all types to the introspection reactor. It
  /// runs once, and only when the reactor is active.
  void define();
  /// The load-time initialiser: enters the types in the type tree, caches the attributes' handles,
  /// then runs the pass once more.
  void load();

 private:
  void declare(ModuleType const& type) const;

  char const* nameSpace_;
  std::span<ModuleType const> types_;
  std::span<RecordFn const> fetchOrder_;
  bool isDefined_ = false;
};

/// Makes the record of the type that `table` is about, and leaves it at `record`.
void makeRecord(Module& module, Tables::TypeTable const& table, Kex::KexType*& record);

/// The record of `T`, made on first use.
template <class T>
Kex::KexType& recordOf(Module& module, Tables::TypeTable const& table) {
  static constinit Kex::KexType* record = nullptr;
  if (record == nullptr) {
    makeRecord(module, table, record);
  }
  return *record;
}

}  // namespace Emerson::Registration
