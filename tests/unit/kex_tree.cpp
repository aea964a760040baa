// The tree of entities: who holds whom under which name, singletons, what entities know by name.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/entity/FileDescriptor.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/time/Clock.h"
#include "tests/unit/ipmi_support.h"

namespace {

using Kex::Directory;
using Kex::Entity;
using Kex::make;
using Kex::Ptr;

template <class Work>
std::string refusalOf(Work work) {
  try {
    work();
  } catch (Kex::Exception const& refused) {
    return std::string(refused.kind()) + ": " + refused.what();
  }
  return "";
}

TEST(KexDirectory, holdsEachEntityOnceAndNeverItself) {
  auto const a = make<Directory>("a");
  auto const b = make<Directory>("b");
  auto const c = make<Directory>("c");
  auto const other = make<Directory>("c");
  auto const nameless = make<Directory>("");
  Kex::root().memberIs(a);
  struct {
    Ptr<Directory> holder;
    Ptr<Entity> member;
    std::string refusal;
    std::string tree;  ///< paths afterwards of b, c and the other c
  } const rows[] = {
      {a, b, "", "/a/b c c"},
      {b, c, "", "/a/b /a/b/c c"},
      {a, nameless, "range: an entity without a name cannot be a member", "/a/b /a/b/c c"},
      {c, a, "range: /a cannot be a member of /a/b/c: it would hold itself", "/a/b /a/b/c c"},
      {b, b, "range: /a/b cannot be a member of /a/b: it would hold itself", "/a/b /a/b/c c"},
      {b, c, "", "/a/b /a/b/c c"},      // again
      {b, other, "", "/a/b c /a/b/c"},  // in place of the one of its name
      {a, other, "", "/a/b c /a/c"},    // taken out of its old parent
      {a, c, "", "/a/b /a/c c"},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(refusalOf([&] { row.holder->memberIs(row.member); }), row.refusal);
    std::string tree;
    std::size_t held = 0;
    for (Ptr<Directory> const& entity : {b, c, other}) {
      tree += (tree.empty() ? "" : " ") + std::string(entity->path().view());
      held += entity->parent() != nullptr ? 1U : 0U;
    }
    EXPECT_EQ(tree, row.tree) << &row - rows;
    EXPECT_EQ(a->memberNames().size() + b->memberNames().size() + c->memberNames().size(), held)
        << &row - rows;
  }
  Kex::root().memberDel("a");
}

TEST(KexDirectory, takesADescriptorOutOfItsRegistry) {
  auto const registry = make<Ipmi::SupportedPowerSupplyRegistry>("registry");
  auto const directory = make<Directory>("directory");
  auto const descriptor = Emerson::IpmiIdentifier::dS2900Factory("d");
  registry->powerSupplyDescriptorIs(descriptor);
  directory->memberIs(descriptor);
  EXPECT_EQ(registry->memberNames().size(), 0U);
  EXPECT_EQ(Kex::valueToStrep(descriptor), "directory/d");
  registry->powerSupplyDescriptorIs(descriptor);
  EXPECT_EQ(directory->memberNames().size(), 0U);
  EXPECT_EQ(Kex::valueToStrep(descriptor), "registry/d");
}

TEST(KexSingletons, areMadeOfEveryTypeThatANameSufficesFor) {
  for (Kex::KexType const* const type : {&Kex::Clock::_fwkType(), &Directory::_fwkType()}) {
    Kex::Name const name(type->fullName());
    EXPECT_FALSE(Entity::singletonExists(name));
    Ptr<Entity> const made = Entity::singletonIs(*type);
    EXPECT_EQ(&made->fwkType(), type);
    EXPECT_EQ(Entity::singletonIs(*type), made);
    EXPECT_EQ(made->parent(), &Kex::root());
    // A type that declares nothing itself has its base's attributes.
    EXPECT_EQ(made->attributeString(0x1), name.str());
    auto const adapter = Kex::KexType::genericIf(made, true);
    EXPECT_EQ(adapter->access({.id = adapter->attribute("parent")->id()})->text(), "/");
    Kex::root().memberDel(name);
  }
  EXPECT_EQ(refusalOf([] { Entity::singleton<Kex::FileDescriptor>(); }),
            "type: Kex::FileDescriptor cannot be made from its name alone");
  auto const noList = refusalOf([] { (void)Kex::Clock::_fwkType().genericIf(nullptr, false); });
  EXPECT_EQ(noList, "type: Kex::GenericIf::List_");
  auto const twoNames = Kex::make<Kex::GenericIf::List_>();
  for (char const* const name : {"clock", "another"}) {
    twoNames->append(make<Kex::Holder<Kex::Name>>(Kex::Name(name)));
  }
  EXPECT_EQ(refusalOf([&] { (void)Kex::Clock::_fwkType().genericIf(twoNames.ptr(), false); }),
            "unknown argument: Clock");
}

}  // namespace
