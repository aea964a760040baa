// Kex::HashMap, the keyed collection of counted members.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "host/kex/base/String8.h"
#include "host/kex/reference/Ptr.h"

namespace Kex {

/// Members by key. It is walked in the order of the keys' hashes (equal hashes: of the keys), so
/// that the order depends on the contents only. `Member` has `String8 const& key() const`, which
/// never changes.
template <class Member>
class HashMap {
  struct Entry {
    U32 hash;
    Ptr<Member> member;
  };
  using Entries = std::vector<Entry>;

 public:
  /// Walks the members, and may outlive the deletion of the one that it stands on: it then goes on
  /// with the one that would have come next. The collection outlives it.
  class Iterator {
   public:
    explicit Iterator(HashMap const& map) : map_(&map) {
      ++map.walks_;
      goTo(0);
    }
    Iterator(Iterator const&) = delete;
    Iterator& operator=(Iterator const&) = delete;
    ~Iterator() { map_->walkDel(); }

    explicit operator bool() const { return member_ != nullptr; }
    Ptr<Member> operator*() const { return Ptr<Member>(member_); }
    Member* operator->() const {
      if (member_ == nullptr) {
        throwNullPtr();
      }
      return member_;
    }
    /// Goes on to the next member; at the end it stays there.
    Iterator& operator++() {
      if (member_ == nullptr) {
        return *this;
      }
      // Where members came or went, the index may stand for another one, but the order does not.
      goTo(changes_ == map_->changes_ ? index_ + 1 : map_->indexBehind(member_->key()));
      return *this;
    }

   private:
    void goTo(std::size_t index) {
      index_ = index;
      changes_ = map_->changes_;
      member_ = index < map_->entries_.size() ? map_->entries_[index].member.ptr() : nullptr;
    }

    HashMap const* map_;
    std::size_t index_ = 0;
    U32 changes_ = 0;
    /// Held by the collection as long as there are walks.
    Member* member_ = nullptr;
  };

  /// An empty collection with room for `initialBuckets` members; it grows where there are more.
  explicit HashMap(U32 initialBuckets = 0) { entries_.reserve(initialBuckets); }

  /// The member under `key`; null if there is none.
  Ptr<Member> member(String8 const& key) const {
    std::size_t const index = indexOf(key.hash(), key.view());
    return isAt(index, key) ? entries_[index].member : Ptr<Member>();
  }
  /// Takes `member` in, in place of one of the same key.
  void memberIs(Ptr<Member> const& member) {
    U32 const hash = member->key().hash();
    std::size_t const index = indexOf(hash, member->key().view());
    if (isAt(index, member->key())) {
      // Let go at the end: it may be what `member` refers to.
      auto const replaced = std::exchange(entries_[index].member, member);
      leave(replaced);
      return;
    }
    ++changes_;
    entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(index), {hash, member});
  }
  /// Lets the member go; null if there was none.
  Ptr<Member> memberDel(String8 const& key) {
    std::size_t const index = indexOf(key.hash(), key.view());
    if (!isAt(index, key)) {
      return {};
    }
    ++changes_;
    Ptr<Member> removed = std::move(entries_[index].member);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
    leave(removed);
    return removed;
  }
  /// Lets all members go.
  void memberDelAll() {
    ++changes_;
    Entries const removed = std::exchange(entries_, {});
    for (Entry const& entry : removed) {
      leave(entry.member);
    }
  }

  Iterator begin() const { return Iterator(*this); }
  /// Number of members.
  U32 size() const { return static_cast<U32>(entries_.size()); }
  /// How many different hashes the keys have.
  U32 buckets() const {
    U32 different = 0;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      different += i == 0 || entries_[i].hash != entries_[i - 1].hash ? 1U : 0U;
    }
    return different;
  }

 private:
  /// Index of the first entry of this hash and key, or behind them.
  std::size_t indexOf(U32 hash, std::string_view key) const {
    auto at = std::ranges::lower_bound(entries_, hash, {}, &Entry::hash);
    while (at != entries_.end() && at->hash == hash && at->member->key().view() < key) {
      ++at;
    }
    return static_cast<std::size_t>(at - entries_.begin());
  }
  /// Index of the first entry behind those of `key`.
  std::size_t indexBehind(String8 const& key) const {
    std::size_t const index = indexOf(key.hash(), key.view());
    return isAt(index, key) ? index + 1 : index;
  }
  bool isAt(std::size_t index, String8 const& key) const {
    return index < entries_.size() && entries_[index].member->key() == key;
  }

  /// Holds a member that was removed while somebody may stand on it.
  void leave(Ptr<Member> const& removed) {
    if (walks_ != 0) {
      left_.push_back(removed);
    }
  }
  void walkDel() const {
    if (--walks_ == 0 && !left_.empty()) {
      auto const left = std::exchange(left_, {});
    }
  }

  /// Sorted.
  Entries entries_;
  /// Removed members, until the walks that there are have ended.
  mutable std::vector<Ptr<Member>> left_;
  mutable U32 walks_ = 0;
  /// Counts what gave entries another index.
  U32 changes_ = 0;
};

}  // namespace Kex
