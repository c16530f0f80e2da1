// Runs in the client. The handles of the C interface. A handle is a number that consists of the
// kind of its object, the index of a slot in the table, and the generation of this slot. The
// generation of a slot changes when its object is removed, so an old handle names no object.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <variant>
#include <vector>

#include "clients/c/Lock.h"

namespace tessel::c {

template <class... Objects>
class HandleTable {
 public:
  using Handle = std::uint64_t;

  template <class Object>
  Handle Add(std::shared_ptr<Object> object) {
    const std::lock_guard guard(lock_);
    if (free_.empty()) {
      slots_.emplace_back();
      free_.reserve(slots_.capacity());  // so that Remove allocates no memory
      free_.push_back(slots_.size() - 1);
    }
    const std::size_t index = free_.back();
    free_.pop_back();
    slots_[index].object = std::move(object);
    return HandleOf<Object>(index);
  }

  // Returns null if the handle names no object of this kind.
  template <class Object>
  std::shared_ptr<Object> Find(Handle handle) {
    const std::lock_guard guard(lock_);
    const std::optional<std::size_t> index = IndexOf<Object>(handle);
    return index ? std::get<std::shared_ptr<Object>>(slots_[*index].object) : nullptr;
  }

  // Removes the object from the table and returns it. Returns null if the handle names no object of
  // this kind.
  template <class Object>
  std::shared_ptr<Object> Remove(Handle handle) {
    const std::lock_guard guard(lock_);
    const std::optional<std::size_t> index = IndexOf<Object>(handle);
    if (!index) return nullptr;
    Slot& slot = slots_[*index];
    auto object = std::move(std::get<std::shared_ptr<Object>>(slot.object));
    slot.object = std::monostate();
    // A slot whose generations are used up stays unused, so that no old handle becomes valid again.
    if ((++slot.generation & kGenerationMask) != 0) free_.push_back(*index);
    return object;
  }

 private:
  using AnyObject = std::variant<std::monostate, std::shared_ptr<Objects>...>;

  struct Slot {
    AnyObject object;
    std::uint32_t generation = 1;  // the low 24 bits are part of the handle
  };

  // A handle has 32 bits of slot, 24 bits of generation and 8 bits of kind.
  static constexpr int kGenerationShift = 32;
  static constexpr int kKindShift = 56;
  static constexpr std::uint32_t kGenerationMask = 0xffffff;

  template <class Object>
  static constexpr Handle KindOf() {
    return AnyObject(std::shared_ptr<Object>()).index();
  }

  template <class Object>
  Handle HandleOf(std::size_t index) const {
    return KindOf<Object>() << kKindShift |
           static_cast<Handle>(slots_[index].generation & kGenerationMask) << kGenerationShift |
           index;
  }

  template <class Object>
  std::optional<std::size_t> IndexOf(Handle handle) const {
    const auto index = static_cast<std::uint32_t>(handle);
    if (index >= slots_.size() || slots_[index].object.index() != KindOf<Object>() ||
        HandleOf<Object>(index) != handle) {
      return std::nullopt;
    }
    return index;
  }

  Lock lock_;
  std::vector<Slot> slots_;
  std::vector<std::size_t> free_;
};

}  // namespace tessel::c
