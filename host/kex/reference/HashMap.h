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
  /// By what members are ordered; they keep their keys, so the text is not copied.
  using Order = std::pair<U32, std::string_view>;
  struct Entry {
    U32 hash;
    Ptr<Member> member;
    Order order() const { return {hash, member->key().view()}; }
  };
  using Entries = std::vector<Entry>;

 public:
  /// Walks the members. It holds the member it stands on and may outlive that member's deletion
  /// from the collection: it then goes on with the one that would have come next.
  class Iterator {
   public:
    Iterator() = default;
    explicit Iterator(HashMap const& map) : map_(&map) { goTo(0); }

    explicit operator bool() const { return bool(member_); }
    Ptr<Member> const& operator*() const { return member_; }
    Member* operator->() const { return member_.operator->(); }
    /// Goes on to the next member; at the end it stays there.
    Iterator& operator++() {
      if (!member_) {
        return *this;
      }
      // Where members came or went, the index may stand for another one, but the order does not.
      goTo(changes_ == map_->changes_ ? index_ + 1 : map_->indexBehind(orderOf(member_->key())));
      return *this;
    }

   private:
    void goTo(std::size_t index) {
      index_ = index;
      changes_ = map_->changes_;
      if (index < map_->entries_.size()) {
        member_ = map_->entries_[index].member;
      } else {
        member_ = nullptr;
      }
    }

    HashMap const* map_ = nullptr;
    std::size_t index_ = 0;
    U32 changes_ = 0;
    Ptr<Member> member_;
  };

  /// An empty collection with room for `initialBuckets` members; it grows where there are more.
  explicit HashMap(U32 initialBuckets = 0) { entries_.reserve(initialBuckets); }

  /// The member under `key`; null if there is none.
  Ptr<Member> member(String8 const& key) const {
    Order const order = orderOf(key);
    std::size_t const index = indexOf(order);
    return isAt(index, order) ? entries_[index].member : Ptr<Member>();
  }
  /// Takes `member` in, in place of one of the same key.
  void memberIs(Ptr<Member> const& member) {
    Order const order = orderOf(member->key());
    std::size_t const index = indexOf(order);
    if (isAt(index, order)) {
      // Let go at the end: it may be what `member` refers to.
      Ptr<Member> const replaced = std::exchange(entries_[index].member, member);
      return;
    }
    ++changes_;
    entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(index), {order.first, member});
  }
  /// Lets the member go; null if there was none.
  Ptr<Member> memberDel(String8 const& key) {
    Order const order = orderOf(key);
    std::size_t const index = indexOf(order);
    if (!isAt(index, order)) {
      return {};
    }
    ++changes_;
    Ptr<Member> removed = std::move(entries_[index].member);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
    return removed;
  }
  /// Lets all members go.
  void memberDelAll() {
    ++changes_;
    Entries const removed = std::exchange(entries_, {});
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
  static Order orderOf(String8 const& key) { return {key.hash(), key.view()}; }

  /// Index of the first entry at `order` or behind it.
  std::size_t indexOf(Order const& order) const {
    return static_cast<std::size_t>(std::ranges::lower_bound(entries_, order, {}, &Entry::order) -
                                    entries_.begin());
  }
  /// Index of the first entry behind `order`.
  std::size_t indexBehind(Order const& order) const {
    std::size_t const index = indexOf(order);
    return isAt(index, order) ? index + 1 : index;
  }
  bool isAt(std::size_t index, Order const& order) const {
    return index < entries_.size() && entries_[index].order() == order;
  }

  /// Sorted.
  Entries entries_;
  /// Counts what gave entries another index.
  U32 changes_ = 0;
};

}  // namespace Kex
