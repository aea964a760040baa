// The kinds of access to an attribute, each written once for all types.
#pragma once

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "host/tables/ArgumentReader.h"
#include "host/tables/AttrRow.h"

namespace Tables {

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

/// The names of a function's arguments: as many as it has, none of them empty.
template <std::size_t kCount>
using ArgumentNames = std::array<char const*, kCount>;

template <class Tuple, std::size_t... I>
consteval auto argumentsOf(ArgumentNames<sizeof...(I)> const& names, std::index_sequence<I...>) {
  if (((names[I] == nullptr) || ...)) {
    throw "an argument without a name";
  }
  return decltype(AttrAccess::arguments){
      AttrAccess::Argument{names[I], &Kex::typeOf<std::tuple_element_t<I, Tuple>>}...};
}

template <class T>
T& objectAs(Kex::PtrInterface& object) {
  // The adapter has seen to it that the object is one.
  return dynamic_cast<T&>(object);
}

template <auto Member, std::size_t... I>
void call(AttrRow const& row, Kex::PtrInterface& object, ArgumentReader& reader,
          std::index_sequence<I...>) {
  using Values = ValuesOf<Member>;
  // Braces take the arguments in order.
  Values const values{
      reader.next<std::tuple_element_t<I, Values>>(row.access.arguments[I].name)...};
  reader.end(row.name);
  (objectAs<ClassOf<Member>>(object).*Member)(std::get<I>(values)...);
}

inline void refuseIndex(AttrRow const& row, Kex::AttributeRequest const& request) {
  if (request.index != nullptr) {
    Kex::GenericIf::throwBadIndexAttrException(row.name);
  }
}

template <class T>
T valueFor(AttrRow const& row, Kex::AttributeRequest const& request) {
  auto value = Kex::convertTo<T>(request.value);
  if (!value) {
    Kex::GenericIf::throwTypeException(row.name);
  }
  return *std::move(value);
}

}  // namespace Detail

/// A function: code 0 calls `Member` with the arguments of the list, which bear `names`; the answer
/// is empty.
template <auto Member>
consteval AttrAccess function(
    Detail::ArgumentNames<std::tuple_size_v<Detail::ValuesOf<Member>>> const& names = {}) {
  using Values = Detail::ValuesOf<Member>;
  using Indices = std::make_index_sequence<std::tuple_size_v<Values>>;
  return {.valueType = &Kex::Builtin<void*>::_fwkType,
          .arguments = Detail::argumentsOf<Values>(names, Indices()),
          .carryOut = [](AttrRow const& row, Kex::PtrInterface& object,
                         Kex::AttributeRequest const& request) -> Kex::Ptr<Kex::GenericIf> {
            if (request.code != Kex::kRead) {
              Kex::GenericIf::throwOpNotSupportedException(row.name, request.code, false);
            }
            Detail::refuseIndex(row, request);
            ArgumentReader reader(request.value);
            Detail::call<Member>(row, object, reader, Indices());
            return {};
          }};
}

/// A value: code 0 reads it with `Get`, code 128 writes it with `Set` where there is one.
template <auto Get, auto Set = nullptr>
inline constexpr AttrAccess value{
    .valueType = &Kex::typeOf<Detail::ResultOf<Get>>,
    .carryOut = [](AttrRow const& row, Kex::PtrInterface& object,
                   Kex::AttributeRequest const& request) -> Kex::Ptr<Kex::GenericIf> {
      using Class = Detail::ClassOf<Get>;
      using Value = Detail::ResultOf<Get>;
      Detail::refuseIndex(row, request);
      if (request.code == Kex::kRead) {
        return Kex::holderOf<Value>((Detail::objectAs<Class>(object).*Get)());
      }
      if constexpr (!std::is_same_v<decltype(Set), std::nullptr_t>) {
        if (request.code == Kex::kWrite) {
          (Detail::objectAs<Class>(object).*Set)(Detail::valueFor<Value>(row, request));
          return {};
        }
      }
      Kex::GenericIf::throwOpNotSupportedException(row.name, request.code, false);
    }};

/// An attribute whose object is created from a `size`: code 0 reads it, 128 creates it, 129 deletes
/// it and answers the one that was removed.
template <auto Get, auto Create, auto Delete>
inline constexpr AttrAccess instantiating{
    .valueType = &Kex::typeOf<Detail::ResultOf<Get>>,
    .arguments = {{{"size", &Kex::Builtin<Kex::U32>::_fwkType}}},
    .carryOut = [](AttrRow const& row, Kex::PtrInterface& object,
                   Kex::AttributeRequest const& request) -> Kex::Ptr<Kex::GenericIf> {
      auto& target = Detail::objectAs<Detail::ClassOf<Get>>(object);
      auto const answer = [](auto const& held) -> Kex::Ptr<Kex::GenericIf> {
        return held ? Kex::holderOf(held) : Kex::Ptr<Kex::GenericIf>();
      };
      Detail::refuseIndex(row, request);
      switch (request.code) {
        case Kex::kRead: return answer((target.*Get)());
        case Kex::kWrite: {
          ArgumentReader reader(request.value);
          auto const size = reader.next<Kex::U32>(row.access.arguments.front().name);
          reader.end(row.name);
          return answer((target.*Create)(size));
        }
        case Kex::kDelete: return answer((target.*Delete)());
        default: Kex::GenericIf::throwOpNotSupportedException(row.name, request.code, false);
      }
    }};

/// A collection with members of type `Value` under keys of type `Key`. `Access` serves it:
/// `Class`, and static `get(object, key)`, `set(object, key, value)`, `del(object, key)`,
/// `size(object)`, `buckets(object)`, `iterator(object)`.
template <class Access, class Key, class Value>
inline constexpr AttrAccess collection{
    .valueType = &Kex::typeOf<Value>,
    .keyType = &Kex::typeOf<Key>,
    .carryOut = [](AttrRow const& row, Kex::PtrInterface& object,
                   Kex::AttributeRequest const& request) -> Kex::Ptr<Kex::GenericIf> {
      auto& target = Detail::objectAs<typename Access::Class>(object);
      auto const key = [&] {
        auto index = Kex::convertTo<Key>(request.index);
        if (!index) {
          Kex::GenericIf::throwTypeException("kex_index");
        }
        return *std::move(index);
      };
      switch (request.code) {
        case Kex::kRead: return Kex::holderOf<Value>(Access::get(target, key()));
        case Kex::kSize: return Kex::holderOf<Kex::U32>(Access::size(target));
        case Kex::kBuckets: return Kex::holderOf<Kex::U32>(Access::buckets(target));
        case Kex::kWrite: {
          Key const index = key();
          Access::set(target, index, Detail::valueFor<Value>(row, request));
          return {};
        }
        case Kex::kDelete: Access::del(target, key()); return {};
        default: Kex::GenericIf::throwOpNotSupportedException(row.name, request.code, true);
      }
    },
    .iterator = [](Kex::PtrInterface const& object) -> Kex::Ptr<Kex::GenericIterator> {
      return Access::iterator(dynamic_cast<typename Access::Class const&>(object));
    }};

}  // namespace Tables
