// psu-agent types: prints the types that the plug-in brings.
#include "agent/commands/Command.h"

#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

#include "agent/commands/TraceOption.h"
#include "agent/slots/Plugin.h"
#include "host/kex/base/Format.h"
#include "host/kex/type/KexType.h"

namespace Agent {

namespace {

using Kex::KexAttr;
using Kex::KexType;
using Json = nlohmann::ordered_json;
using Arguments = std::vector<Kex::KexArgument>;

std::string text(Kex::Name const& name) { return std::string(name.str().view()); }

std::string fullName(KexType const& type) { return std::string(type.fullName().view()); }

char const* kindName(KexAttr::Kind kind) {
  switch (kind) {
    case KexAttr::Kind::function: return "function";
    case KexAttr::Kind::value: return "value";
    case KexAttr::Kind::collection: return "collection";
    case KexAttr::Kind::instantiating: return "instantiating";
  }
  return "";
}

char const* flagName(Kex::KexAttrIntrospectionFlags flags) {
  if (flags.isFunction()) {
    return "isFunction_";
  }
  return flags.isIndependentDomainAttr() ? "isIndependentDomainAttr_" : "none";
}

Arguments constructorArguments(KexType const& type) {
  Arguments arguments;
  for (std::size_t i = 0; i < type.constructorArgNames().size(); ++i) {
    arguments.push_back({type.constructorArgNames()[i], type.constructorArgTypes()[i]});
  }
  return arguments;
}

/// The full name of a type that need not be there.
Json nameOrNull(KexType const* type) { return type == nullptr ? Json() : Json(fullName(*type)); }

Json json(Arguments const& arguments) {
  Json list = Json::array();
  for (Kex::KexArgument const& argument : arguments) {
    list.push_back({{"name", text(argument.name)}, {"type", text(argument.type)}});
  }
  return list;
}

Json json(KexAttr const& attribute) {
  return {{"name", text(attribute.name())},
          {"id", attribute.id()},
          {"kind", kindName(attribute.kind())},
          {"type", fullName(attribute.valueType())},
          {"keyType", nameOrNull(attribute.keyType())},
          {"args", json(attribute.arguments())},
          {"introspectionFlag", flagName(attribute.introspectionFlags())},
          {"flags", attribute.flags()},
          {"own", !attribute.isInherited()}};
}

Json json(KexType const& type) {
  Json attributes = Json::array();
  for (auto const& attribute : type.attributeQ()) {
    attributes.push_back(json(*attribute));
  }
  return {{"name", fullName(type)},
          {"shortName", text(type.name())},
          {"base", nameOrNull(type.base())},
          {"isEntity", type.isEntity()},
          {"hasGenericIfSupport", type.hasGenericIfSupport()},
          {"constructorArgs", json(constructorArguments(type))},
          {"attributes", std::move(attributes)}};
}

/// "(TYPE name, ...)".
std::string inBrackets(Arguments const& arguments) {
  std::string list;
  for (Kex::KexArgument const& argument : arguments) {
    list += (list.empty() ? "" : ", ") + text(argument.type) + ' ' + text(argument.name);
  }
  return '(' + list + ')';
}

/// One line an attribute: identifier, kind, then name and types as a declaration.
void print(KexAttr const& attribute) {
  std::string declaration = text(attribute.name());
  if (attribute.keyType() != nullptr) {
    declaration += '[' + fullName(*attribute.keyType()) + ']';
  }
  if (attribute.kind() == KexAttr::Kind::function || !attribute.arguments().empty()) {
    declaration += inBrackets(attribute.arguments());
  }
  std::cout << Kex::format("  %c 0x%03x %-13s ", attribute.isInherited() ? '^' : ' ',
                           attribute.id(), kindName(attribute.kind()))
            << declaration << " : " << fullName(attribute.valueType()) << '\n';
}

void print(KexType const& type) {
  std::cout << '\n' << fullName(type) << inBrackets(constructorArguments(type));
  if (type.base() != nullptr) {
    std::cout << " : " << fullName(*type.base());
  }
  std::cout << '\n';
  for (auto const& attribute : type.attributeQ()) {
    print(*attribute);
  }
}

Status types(bool isJson, Globals const& globals) {
  Plugin const plugin(globals.library);
  ModelSet const models(globals.models);
  std::vector<KexType const*> listed = plugin.types();
  for (auto const& descriptor : models.descriptors()) {
    listed.push_back(&descriptor->fwkType());
  }
  if (isJson) {
    Json all = Json::array();
    for (KexType const* const type : listed) {
      all.push_back(json(*type));
    }
    std::cout << all.dump(2) << '\n';
    return Status::ok;
  }
  std::cout << "Trace handles: " << traceHandles() << "\nTrace levels: " << kTraceLevels
            << "\nAttributes: ^ inherited, identifier, kind, declaration\n";
  for (KexType const* const type : listed) {
    print(*type);
  }
  return Status::ok;
}

}  // namespace

Action prepareTypes(Parameters& command) {
  auto const isJson = std::make_shared<bool>(false);
  command.addFlag("--json", *isJson, "Print one JSON array instead");
  return [isJson](Globals const& globals) { return types(*isJson, globals); };
}

}  // namespace Agent
