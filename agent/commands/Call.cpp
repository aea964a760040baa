// psu-agent call: one request to an attribute, through the generic interface.
#include "agent/commands/Command.h"

#include <iostream>
#include <memory>
#include <optional>

#include "agent/base/Error.h"
#include "agent/base/Text.h"
#include "agent/slots/Candidate.h"
#include "host/kex/entity/Directory.h"
#include "host/kex/entity/Place.h"
#include "host/kex/generic/Holder.h"

namespace Agent {

namespace {

using Kex::GenericIf;
using Kex::KexAttr;
using Kex::Ptr;
using Kex::String8;

struct Options {
  std::string mfrId = "EMERSON";
  std::string source;
  std::string path;
  std::string attribute;
  std::optional<std::string> index;
  std::string code = "0";
  std::vector<std::string> arguments;
};

String8 text(std::string const& value) { return String8(std::string_view(value)); }

/// Prints `path`, which is that of `object`, and those of all that it holds.
void printPaths(Kex::PtrInterface const& object, std::string const& path) {
  std::cout << (path.empty() ? "/" : path) << '\n';
  for (Kex::Name const& name : object.memberNames()) {
    if (auto const member = object.member(name)) {
      printPaths(*member, path + '/' + Kex::escapedName(name));
    }
  }
}

/// The value that `written` stands for in the type of this name; the text itself where there is no
/// such type.
Ptr<GenericIf> valueOf(Kex::KexType const* type, std::string const& written) {
  return type == nullptr ? Kex::holderOf(text(written)) : type->valueFromText(text(written));
}

/// The argument list of a function, or of the constructor of an attribute's object.
Ptr<GenericIf> argumentList(KexAttr const& attribute, std::vector<std::string> const& written) {
  auto const list = Kex::make<GenericIf::List_>();
  for (std::size_t i = 0; i < written.size(); ++i) {
    bool const isDeclared = i < attribute.arguments().size();
    list->append(valueOf(
        isDeclared ? Kex::KexType::typeNode(attribute.arguments()[i].type) : nullptr, written[i]));
  }
  return list;
}

/// What goes with the request: a list for what is called or created, else the one value.
Ptr<GenericIf> valueFor(KexAttr const& attribute, Kex::U8 code,
                        std::vector<std::string> const& written) {
  bool const isFunction = attribute.kind() == KexAttr::Kind::function;
  if (isFunction || (attribute.kind() == KexAttr::Kind::instantiating && code == Kex::kWrite)) {
    return argumentList(attribute, written);
  }
  if (written.size() > (code == Kex::kWrite ? 1U : 0U)) {
    throw UsageError("--arg: " + written.back() + " is more than the request takes");
  }
  return written.empty() ? Ptr<GenericIf>() : valueOf(&attribute.valueType(), written.front());
}

/// An attribute, and the adapter that knows it.
struct Target {
  Ptr<GenericIf> adapter;
  KexAttr const* attribute = nullptr;
};

/// Looks in the schemas of the object's type and of its bases: not every type repeats its base's.
Target findAttribute(Ptr<Kex::PtrInterface> const& object, Kex::Name const& name) {
  Target target;
  for (Kex::KexType const* type = &object->fwkType();
       type != nullptr && target.attribute == nullptr; type = type->base()) {
    target.adapter = type->newAdapter(object, false);
    target.attribute = target.adapter->attribute(name);
  }
  return target;
}

void request(Options const& options, Kex::U8 code) {
  auto const object = Kex::textToPtr(text(options.path), Kex::PtrInterface::_fwkType());
  if (!object) {
    throw Failure(options.path + ": is no path of an object");
  }
  Target const target = findAttribute(object, Kex::Name(text(options.attribute)));
  KexAttr const* const attribute = target.attribute;
  if (attribute == nullptr) {
    throw Failure(options.path + ": has no attribute " + options.attribute);
  }
  Ptr<GenericIf> const index =
      options.index ? valueOf(attribute->keyType(), *options.index) : Ptr<GenericIf>();
  Ptr<GenericIf> const value = valueFor(*attribute, code, options.arguments);
  auto const answer = target.adapter->access(
      {.id = attribute->id(), .code = code, .index = index.ptr(), .value = value.ptr()});
  if (answer) {
    std::cout << escaped(answer->text().view()) << '\n';
  }
}

Kex::U8 codeOf(std::string const& written) {
  try {
    return Kex::strepToValue<Kex::U8>(text(written));
  } catch (Kex::Exception const&) {
    throw UsageError("--code: " + inQuotes(written) + " is no number from 0 to 255");
  }
}

Status call(Options const& options, Globals const& globals) {
  Kex::U8 const code = codeOf(options.code);
  if (options.path.empty() != options.attribute.empty()) {
    throw UsageError("PATH: " + options.path + " needs an ATTRIBUTE");
  }
  Source const source(options.source);
  Plugin const plugin(globals.library);
  ModelSet const models(globals.models);
  Loop loop(source.isLive() ? ClockKind::steadyClock : ClockKind::virtualClock);
  auto const candidate = detected(source, options.mfrId, plugin, loop);
  if (loop.isStopped()) {
    return loop.status();
  }
  if (options.path.empty()) {
    printPaths(Kex::root(), "");
  } else {
    try {
      request(options, code);
    } catch (Kex::Exception const&) {
      throw Failure(options.path + ' ' + options.attribute + ": " +
                    exceptionText(std::current_exception()));
    }
  }
  return Status::ok;
}

}  // namespace

Action prepareCall(Parameters& command) {
  auto const options = std::make_shared<Options>();
  addMfrIdOption(command, options->mfrId);
  command.add("--code", options->code, "0 reads or calls, 128 writes, 129 deletes").shownAs("N");
  command.add("--arg", options->arguments, "A value or argument, as text of its type")
      .repeatable("VALUE");
  command.add("SOURCE", options->source, "As of identify, which is done first").required();
  command.add("PATH", options->path, "Path of an object; without it, paths are listed");
  command.add("ATTRIBUTE", options->attribute, "Name of an attribute of the object");
  command.add("INDEX", options->index, "Key of a member of a collection");
  return [options](Globals const& globals) { return call(*options, globals); };
}

}  // namespace Agent
