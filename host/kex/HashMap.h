// Kex::HashMap, the keyed collection of counted members.
#pragma once

#include <iterator>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "host/kex/Ptr.h"
#include "host/kex/String8.h"

namespace Kex {

/// Members by key. It is walked in the order of the keys' hashes (equal hashes: of the keys), so
/// that the order depends on the contents only. `Member` has `String8 const& key() const`.
template <class Member>
class HashMap {
  /// Where a key stands; a member keeps its key, so the text is not copied.
  using Place = std::pair<U32, std::string_view>;
  using Members = std::map<Place, Ptr<Member>>;

 public:
  /// Walks the members. It holds the member it stands on and may outlive that member's deletion
  /// from the collection: it then goes on with the one that would have come next.
  class Iterator {
   public:
    Iterator() = default;
    explicit Iterator(HashMap const& map) : map_(&map) { goTo(map.members_.begin()); }

    explicit operator bool() const { return bool(member_); }
    Ptr<Member> const& operator*() const { return member_; }
    Member* operator->() const { return member_.operator->(); }
    Iterator& operator++() {
      // Where members came or went, the position may be gone, but never the place.
      goTo(changes_ == map_->changes_ ? std::next(position_)
                                      : map_->members_.upper_bound({hash_, member_->key().view()}));
      return *this;
    }

   private:
    void goTo(typename Members::const_iterator position) {
      if (position == map_->members_.end()) {
        member_ = nullptr;
      } else {
        position_ = position;
        changes_ = map_->changes_;
        hash_ = position->first.first;
        member_ = position->second;
      }
    }

    HashMap const* map_ = nullptr;
    typename Members::const_iterator position_;
    U64 changes_ = 0;
    U32 hash_ = 0;
    Ptr<Member> member_;
  };

  /// The member under `key`; null if there is none.
  Ptr<Member> member(String8 const& key) const {
    auto const found = members_.find(placeOf(key));
    return found == members_.end() ? Ptr<Member>() : found->second;
  }
  /// Takes `member` in, in place of one of the same key.
  void memberIs(Ptr<Member> const& member) {
    // The place points into the member's own key, so a replaced member takes its place with it.
    memberDel(member->key());
    members_.emplace(placeOf(member->key()), member);
    ++changes_;
  }
  /// Lets the member go; null if there was none.
  Ptr<Member> memberDel(String8 const& key) {
    auto node = members_.extract(placeOf(key));
    ++changes_;
    return node.empty() ? Ptr<Member>() : node.mapped();
  }
  void memberDelAll() {
    members_.clear();
    ++changes_;
  }

  Iterator begin() const { return Iterator(*this); }
  U32 size() const { return static_cast<U32>(members_.size()); }
  /// How many different hashes the keys have.
  U32 buckets() const {
    std::set<U32> hashes;
    for (auto const& [place, member] : members_) {
      hashes.insert(place.first);
    }
    return static_cast<U32>(hashes.size());
  }

 private:
  static Place placeOf(String8 const& key) { return {key.hash(), key.view()}; }

  Members members_;
  /// Counts what may have moved or removed a member.
  U64 changes_ = 0;
};

}  // namespace Kex
