// The generic interface: values and objects that are handled by name and identifier alone.
#include "host/kex/generic/GenericIf.h"

#include <string>

#include "host/kex/base/Format.h"
#include "host/kex/generic/TextConversion.h"
#include "host/kex/type/KexType.h"

namespace Kex {

GenericIterator::~GenericIterator() = default;
GenericIf::~GenericIf() = default;
TypeException::~TypeException() = default;
ConstException::~ConstException() = default;
OpNotSupportedException::~OpNotSupportedException() = default;
UnknownArgException::~UnknownArgException() = default;
BadIndexAttrException::~BadIndexAttrException() = default;

Ptr<PtrInterface> GenericIf::castTo(KexType const&) const {
  throwTypeException(type().name().str());
}

KexAttr const* GenericIf::attribute(Name const&) const { return nullptr; }

Ptr<GenericIf> GenericIf::access(AttributeRequest const& request) const {
  /// Tells the object at the end, also of a request that was refused halfway.
  struct Change {
    Ptr<PtrInterface> object;
    ~Change() {
      if (object) {
        object->handleOutsideChange();
      }
    }
  };
  KexAttr const* const attribute = type().attr(request.id);
  bool const isCall = attribute != nullptr && attribute->introspectionFlags().isFunction();
  Change const change{isCall || request.code >= kWrite ? object() : Ptr<PtrInterface>()};
  return doAccess(request);
}

Ptr<GenericIf> GenericIf::doAccess(AttributeRequest const& request) const {
  if (request.id == 0) {
    throwRangeException(
        format("%s: attributes with identifier 0 are declared only and cannot be "
               "addressed by number",
               type().name().charPtr()));
  }
  throwRangeException(format("%s has no attribute 0x%x", type().name().charPtr(), request.id));
}

Ptr<GenericIterator> GenericIf::iterator(AttributeId id) const {
  throwRangeException(format("%s has no collection 0x%x", type().name().charPtr(), id));
}

void GenericIf::throwTypeException(String8 const& text) { throw TypeException(text); }

void GenericIf::throwConstException(String8 const& text) { throw ConstException(text); }

void GenericIf::throwOpNotSupportedException(Name const& attribute, U8, bool) {
  throw OpNotSupportedException(attribute.str());
}

void GenericIf::throwUnknownArgException(Name const& name) {
  throw UnknownArgException(name.str());
}

void GenericIf::throwBadIndexAttrException(Name const& attribute) {
  throw BadIndexAttrException(attribute.str());
}

KexType const& GenericIf::List_::type() const {
  static KexType& record = newHostType<List_>("Kex::GenericIf::List_", nullptr);
  return record;
}

String8 GenericIf::List_::text() const {
  std::string text = "[";
  for (auto const& element : elements_) {
    text += (text.size() > 1 ? ", " : "");
    text += (element ? element->text() : ptrToStrep(nullptr)).view();
  }
  return String8(text + "]");
}

KexType const& GenericIfPtrInterface::type() const { return object_->fwkType(); }

Ptr<PtrInterface> GenericIfPtrInterface::castTo(KexType const& wanted) const {
  if (!type().isA(wanted)) {
    throwTypeException(type().name().str());
  }
  return object_;
}

KexAttr const* GenericIfPtrInterface::attribute(Name const& name) const {
  return type().attr(name);
}

String8 GenericIfPtrInterface::text() const { return ptrToStrep(object_.ptr()); }

Ptr<GenericIf> GenericIfPtrInterface::baseGenericIf(KexType const& type) const {
  return type.base()->newAdapter(object_, isConst_);
}

}  // namespace Kex
