// The singly linked list of one kind's subheader records, in segment order.
#pragma once

#include "Common/Owning.h"

struct FileHeader;

template <class R>
class SegmentList : NonCopyable {
 public:
  /// One segment: its record and the next one.
  struct Node {
    TrackedObject<R> record;
    Node* next = nullptr;
  };
  /// Walks the records in segment order.
  class Iterator {
   public:
    explicit Iterator(Node* node) : node_(node) {}
    R& operator*() const { return *node_->record; }
    Iterator& operator++() {
      node_ = node_->next;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return node_ != other.node_; }

   private:
    Node* node_;
  };

  ~SegmentList() { Clear(); }

  /// Adds a fresh record at the end, told its index and, where its setters change lengths, the file
  /// header that has them. -1, nothing changed.
  Status Append(FileHeader& header, SourceTag where) {
    TrackedObject<Node> node;
    if (Status s = node.Make(where); !Ok(s)) return s;
    if (Status s = node->record.Make(where); !Ok(s)) return s;
    node->record->index = count_;
    if constexpr (requires { node->record->owner; }) node->record->owner = &header;
    Node* added = node.Release();
    (tail_ != nullptr ? tail_->next : head_) = added;
    tail_ = added;
    ++count_;
    return Status::Success;
  }
  /// Frees the last record.
  void RemoveLast() {
    if (head_ == nullptr) return;
    Node** last = &head_;
    Node* before = nullptr;
    while ((*last)->next != nullptr) {
      before = *last;
      last = &before->next;
    }
    lastFound_ = nullptr;
    Free(std::exchange(*last, nullptr));
    tail_ = before;
    --count_;
  }
  void Clear() {
    while (head_ != nullptr) Free(std::exchange(head_, head_->next));
    tail_ = lastFound_ = nullptr;
    count_ = 0;
  }

  uint32_t Count() const { return count_; }
  /// The record of an index, null at or beyond the count.
  R* At(uint32_t index) const {
    if (index >= count_) return nullptr;
    if (lastFound_ == nullptr || index < lastIndex_) {
      lastFound_ = head_;
      lastIndex_ = 0;
    }
    for (; lastIndex_ < index; ++lastIndex_) lastFound_ = lastFound_->next;
    return lastFound_->record.get();
  }
  R* Last() const { return tail_ != nullptr ? tail_->record.get() : nullptr; }
  Iterator begin() const { return Iterator(head_); }
  Iterator end() const { return Iterator(nullptr); }

 private:
  static void Free(Node* node) {
    TrackedObject<Node> owner;
    owner.Adopt(node);
  }

  Node* head_ = nullptr;
  Node* tail_ = nullptr;
  // Segments are mostly asked for in order: the search goes on from the last one found.
  mutable Node* lastFound_ = nullptr;
  mutable uint32_t lastIndex_ = 0;
  uint32_t count_ = 0;
};
