// psu-agent types: prints the types that the plug-in brings.
#include "agent/commands/Types.h"

#include <iostream>
#include <memory>

#include "agent/report/Report.h"
#include "agent/slots/Plugin.h"
#include "host/kex/base/Format.h"
#include "host/kex/type/KexType.h"

namespace Agent {

namespace {

using Kex::KexAttr;
using Kex::KexType;

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

Json json(Kex::Name const& name, Kex::Name const& type) {
  return {{"name", text(name)}, {"type", text(type)}};
}

Json json(KexAttr const& attribute) {
  Json arguments = Json::array();
  for (Kex::KexArgument const& argument : attribute.arguments()) {
    arguments.push_back(json(argument.name, argument.type));
  }
  KexType const* const key = attribute.keyType();
  return {{"name", text(attribute.name())},
          {"id", attribute.id()},
          {"kind", kindName(attribute.kind())},
          {"type", fullName(attribute.valueType())},
          {"keyType", key == nullptr ? Json() : Json(fullName(*key))},
          {"args", std::move(arguments)},
          {"introspectionFlag", flagName(attribute.introspectionFlags())},
          {"flags", attribute.flags()},
          {"own", !attribute.isInherited()}};
}

Json json(KexType const& type) {
  Json arguments = Json::array();
  for (std::size_t i = 0; i < type.constructorArgNames().size(); ++i) {
    arguments.push_back(json(type.constructorArgNames()[i], type.constructorArgTypes()[i]));
  }
  Json attributes = Json::array();
  for (auto const& attribute : type.attributeQ()) {
    attributes.push_back(json(*attribute));
  }
  return {{"name", fullName(type)},
          {"shortName", text(type.name())},
          {"base", type.base() == nullptr ? Json() : Json(fullName(*type.base()))},
          {"isEntity", type.isEntity()},
          {"hasGenericIfSupport", type.hasGenericIfSupport()},
          {"constructorArgs", std::move(arguments)},
          {"attributes", std::move(attributes)}};
}

/// "(TYPE name, ...)".
std::string argumentList(Json const& arguments) {
  std::string list;
  for (Json const& argument : arguments) {
    list += (list.empty() ? "" : ", ") + argument["type"].get<std::string>() + ' ' +
            argument["name"].get<std::string>();
  }
  return '(' + list + ')';
}

/// One line an attribute: identifier, kind, then name and types as a declaration.
void print(Json const& attribute) {
  auto const kind = attribute["kind"].get<std::string>();
  auto declaration = attribute["name"].get<std::string>();
  if (!attribute["keyType"].is_null()) {
    declaration += '[' + attribute["keyType"].get<std::string>() + ']';
  }
  if (kind == "function" || !attribute["args"].empty()) {
    declaration += argumentList(attribute["args"]);
  }
  std::cout << Kex::format("  %c 0x%03x %-13s ", attribute["own"].get<bool>() ? ' ' : '^',
                           attribute["id"].get<unsigned>(), kind.c_str())
            << declaration << " : " << attribute["type"].get<std::string>() << '\n';
}

void printType(Json const& type) {
  std::cout << type["name"].get<std::string>() << argumentList(type["constructorArgs"]);
  if (!type["base"].is_null()) {
    std::cout << " : " << type["base"].get<std::string>();
  }
  std::cout << '\n';
  for (Json const& attribute : type["attributes"]) {
    print(attribute);
  }
}

Status types(bool isJson, Globals const& globals) {
  Json all = Json::array();
  Plugin const plugin(globals.library);
  for (KexType const* const type : plugin.types()) {
    all.push_back(json(*type));
  }
  if (isJson) {
    std::cout << all.dump(2) << '\n';
  } else {
    std::cout << "Attributes: ^ inherited, identifier, kind, declaration\n";
    for (Json const& type : all) {
      std::cout << '\n';
      printType(type);
    }
  }
  return Status::ok;
}

}  // namespace

void addTypes(CLI::App& program, Action& action) {
  auto const isJson = std::make_shared<bool>(false);
  CLI::App& command = *program.add_subcommand("types", "Print the types that the plug-in brings");
  command.add_flag("--json", *isJson, "Print one JSON array instead");
  command.callback([isJson, &action] {
    action = [isJson](Globals const& globals) { return types(*isJson, globals); };
  });
}

}  // namespace Agent
