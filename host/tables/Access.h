// The kinds of access to an attribute, each written once for all types.
#pragma once

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "host/tables/AttrRow.h"

namespace Kex {

namespace Detail {

template <class Member>
struct MemberTraits;
template <class T, class R, class... Arguments>
struct MemberTraits<R (T::*)(Arguments...)> {
  using Class = T;
  using Result = std::remove_cvref_t<R>;
  using Values = std::tuple<std::remove_cvref_t<Arguments>...>;
  static constexpr std::size_t kArguments = sizeof...(Arguments);
};
template <class T, class R, class... Arguments>
struct MemberTraits<R (T::*)(Arguments...) const> : MemberTraits<R (T::*)(Arguments...)> {};
template <class T, class R, class... Arguments>
struct MemberTraits<R (T::*)(Arguments...) const noexcept> : MemberTraits<R (T::*)(Arguments...)> {
};

template <auto Member>
using ClassOf = typename MemberTraits<decltype(Member)>::Class;
template <auto Member>
using ResultOf = typename MemberTraits<decltype(Member)>::Result;
template <auto Member>
using ValuesOf = typename MemberTraits<decltype(Member)>::Values;

template <class Tuple, std::size_t... I>
constexpr std::array<AttrAccess::RecordFn, 4> typesOf(std::index_sequence<I...>) {
  return {&typeOf<std::tuple_element_t<I, Tuple>>...};
}

template <class T>
T& objectAs(PtrInterface& object) {
  // The adapter has seen to it that the object is one.
  return dynamic_cast<T&>(object);
}

template <auto Member, std::size_t... I>
void call(AttrRow const& row, PtrInterface& object, ArgumentReader& reader,
          std::index_sequence<I...>) {
  using Values = ValuesOf<Member>;
  // Braces take the arguments in order.
  Values const values{reader.next<std::tuple_element_t<I, Values>>(row.arguments[I])...};
  reader.end(row.name);
  (objectAs<ClassOf<Member>>(object).*Member)(std::get<I>(values)...);
}

inline void refuseIndex(AttrRow const& row, AttributeRequest const& request) {
  if (request.index != nullptr) {
    GenericIf::throwBadIndexAttrException(row.name);
  }
}

template <class T>
T valueFor(AttrRow const& row, AttributeRequest const& request) {
  auto value = convertTo<T>(request.value);
  if (!value) {
    GenericIf::throwTypeException(row.name);
  }
  return *std::move(value);
}

}  // namespace Detail

/// A function: code 0 calls `Member` with the arguments of the list; the answer is empty.
template <auto Member>
inline constexpr AttrAccess function{
    .kind = KexAttr::Kind::function,
    .valueType = &Builtin<void*>::_fwkType,
    .argumentTypes = Detail::typesOf<Detail::ValuesOf<Member>>(
        std::make_index_sequence<std::tuple_size_v<Detail::ValuesOf<Member>>>()),
    .carryOut = [](AttrRow const& row, PtrInterface& object,
                   AttributeRequest const& request) -> Ptr<GenericIf> {
      if (request.code != kRead) {
        GenericIf::throwOpNotSupportedException(row.name, request.code, false);
      }
      Detail::refuseIndex(row, request);
      ArgumentReader reader(request.value);
      Detail::call<Member>(row, object, reader,
                           std::make_index_sequence<std::tuple_size_v<Detail::ValuesOf<Member>>>());
      return {};
    }};

/// A value: code 0 reads it with `Get`, code 128 writes it with `Set` where there is one.
template <auto Get, auto Set = nullptr>
inline constexpr AttrAccess value{
    .kind = KexAttr::Kind::value,
    .valueType = &typeOf<Detail::ResultOf<Get>>,
    .carryOut = [](AttrRow const& row, PtrInterface& object,
                   AttributeRequest const& request) -> Ptr<GenericIf> {
      using Class = Detail::ClassOf<Get>;
      using Value = Detail::ResultOf<Get>;
      Detail::refuseIndex(row, request);
      if (request.code == kRead) {
        return holderOf<Value>((Detail::objectAs<Class>(object).*Get)());
      }
      if constexpr (!std::is_same_v<decltype(Set), std::nullptr_t>) {
        if (request.code == kWrite) {
          (Detail::objectAs<Class>(object).*Set)(Detail::valueFor<Value>(row, request));
          return {};
        }
      }
      GenericIf::throwOpNotSupportedException(row.name, request.code, false);
    }};

/// An attribute whose object is created from a size: code 0 reads it, 128 creates it, 129 deletes
/// it and answers the one that was removed.
template <auto Get, auto Create, auto Delete>
inline constexpr AttrAccess instantiating{
    .kind = KexAttr::Kind::instantiating,
    .valueType = &typeOf<Detail::ResultOf<Get>>,
    .argumentTypes = {&Builtin<U32>::_fwkType},
    .carryOut = [](AttrRow const& row, PtrInterface& object,
                   AttributeRequest const& request) -> Ptr<GenericIf> {
      auto& target = Detail::objectAs<Detail::ClassOf<Get>>(object);
      auto const answer = [](auto const& held) -> Ptr<GenericIf> {
        return held ? holderOf(held) : Ptr<GenericIf>();
      };
      Detail::refuseIndex(row, request);
      switch (request.code) {
        case kRead: return answer((target.*Get)());
        case kWrite: {
          ArgumentReader reader(request.value);
          U32 const size = reader.next<U32>(row.arguments.front());
          reader.end(row.name);
          return answer((target.*Create)(size));
        }
        case kDelete: return answer((target.*Delete)());
        default: GenericIf::throwOpNotSupportedException(row.name, request.code, false);
      }
    }};

/// A collection with members of type `Value` under keys of type `Key`. `Access` serves it:
/// `Class`, and static `get(object, key)`, `set(object, key, value)`, `del(object, key)`,
/// `size(object)`, `buckets(object)`, `iterator(object)`.
template <class Access, class Key, class Value>
inline constexpr AttrAccess collection{
    .kind = KexAttr::Kind::collection,
    .valueType = &typeOf<Value>,
    .keyType = &typeOf<Key>,
    .carryOut = [](AttrRow const& row, PtrInterface& object,
                   AttributeRequest const& request) -> Ptr<GenericIf> {
      auto& target = Detail::objectAs<typename Access::Class>(object);
      auto const key = [&] {
        auto index = convertTo<Key>(request.index);
        if (!index) {
          GenericIf::throwTypeException("kex_index");
        }
        return *std::move(index);
      };
      switch (request.code) {
        case kRead: return holderOf<Value>(Access::get(target, key()));
        case kSize: return holderOf<U32>(Access::size(target));
        case kBuckets: return holderOf<U32>(Access::buckets(target));
        case kWrite: {
          Key const index = key();
          Access::set(target, index, Detail::valueFor<Value>(row, request));
          return {};
        }
        case kDelete: Access::del(target, key()); return {};
        default: GenericIf::throwOpNotSupportedException(row.name, request.code, true);
      }
    },
    .iterator = [](PtrInterface const& object) -> Ptr<GenericIterator> {
      return Access::iterator(dynamic_cast<typename Access::Class const&>(object));
    }};

}  // namespace Kex
