// Natives: the things behind handle objects, and their pairing with host objects.
//
// The host knows nothing of what a native is. A family tells in a few functions how the
// natives of one kind are kept, whether they still live and which class they are of; a
// native is an address within it, and for natives that are a part of another one (a
// collection of an element, say) the address of the whole and what tells the part.
//
// A native has at most one host object at a time: it is made when somebody first looks,
// keeps the native until its last copy goes, and every copy is the same object. An array
// of natives is one block of their addresses; its objects come into being one by one, as
// they are looked at. All of it belongs to the host's thread.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/array.h"

namespace vcos {

class COSClass;

/// Where a native lies.
struct Native {
  void* object = nullptr;
  const void* part = nullptr;
  bool operator==(const Native&) const = default;
};

/// What the host must know of one kind of natives. A constant table of functions, which
/// must outlive the process's last host array; those that are null have the stated effect.
struct NativeFamily {
  /// A word for messages.
  std::string_view name;
  /// Keeps the native's memory, and gives it back. When null, natives live until they are
  /// removed, and whoever owns them must not forget to do it; such natives cannot lie in
  /// an array of natives. The second may run any code and must not throw.
  void (*retain)(const Native& native) = nullptr;
  void (*release)(const Native& native) noexcept = nullptr;
  /// Whether the native can be used; asked before each use while it is retained. When
  /// null, it can until it is removed.
  bool (*isAlive)(const Native& native) noexcept = nullptr;
  /// The class of a native, alive or not; when null, whoever announces it must name it.
  const COSClass* (*classOf)(const Native& native) = nullptr;
  /// A few words on a living native for messages; when null, none.
  std::string (*describe)(const Native& native) = nullptr;
};

/// Natives of one family, with a reference to each.
class VEXAL_API NativeList {
 public:
  NativeList() = default;
  NativeList(const NativeList&) = delete;
  NativeList& operator=(const NativeList&) = delete;
  ~NativeList() { clear(); }

  /// Adds one and retains it; all must be of the same family, which retains.
  void add(const NativeFamily& family, void* native) {
    natives_.push_back(native);
    family_ = &family;
    family.retain({native});
  }
  void clear() noexcept {
    for (void* const native : natives_) family_->release({native});
    natives_.clear();
  }
  /// Of a list that is not empty.
  const NativeFamily& family() const noexcept { return *family_; }
  std::span<void* const> natives() const noexcept { return natives_; }

 private:
  const NativeFamily* family_ = nullptr;
  std::vector<void*> natives_;
};

/// Whether an array takes references to natives of its own, or those that the caller has.
enum class Reference { Retain, Adopt };

namespace factory::basic {

/// The pairs of natives and host objects.
class VEXAL_API BindingRegistry {
 public:
  BindingRegistry() = delete;

  /// The native's host object: the recorded one, or a new one that retains the native, of
  /// `hostClass` or, without it, of the class that the family tells. Raises
  /// "Vexal:class:UnknownClass" when there is neither, "Vexal:class:InvalidHandle" for a
  /// null native.
  static vexal::ArrayPtr announce(const NativeFamily& family, Native native,
                                  const COSClass* hostClass = nullptr);

  /// The same for a class by name; raises "Vexal:class:UnknownClass" for an unknown one.
  static vexal::ArrayPtr announce(const NativeFamily& family, Native native,
                                  std::string_view className);

  /// Makes the object that a constructor was given stand for the native. With
  /// `isExclusive`, a native that has another host object already is refused with
  /// "Vexal:class:AlreadyBound", and the object stays as it is; otherwise it becomes
  /// that one.
  static void announceForConstructor(const NativeFamily& family, Native native,
                                     std::string_view className, vxArray* object, bool isExclusive);

  /// A 1-by-n array of natives: at most a few nanoseconds each, and objects only for those
  /// that are looked at. Its class is `hostClass` or, without it, the most specific one
  /// that all share, "vexal.mixin.Heterogeneous" if none. With Reference::Adopt the array
  /// takes over one reference of each; when it cannot be made, none. Without natives
  /// `hostClass` is needed, and the array is 0-by-0. Raises what announce() raises, and
  /// "Vexal:class:InvalidHandle" for a family that does not retain.
  static vexal::ArrayPtr announceAll(const NativeFamily& family, std::span<void* const> natives,
                                     const COSClass* hostClass = nullptr,
                                     Reference reference = Reference::Retain);

  /// Parts a native from its host object, if it has one, of which every further use raises
  /// "Vexal:class:InvalidHandle". What the object retained it releases when it goes.
  static void remove(const NativeFamily& family, Native native) noexcept;

  /// Whether the native has a host object now.
  static bool isAnnounced(const NativeFamily& family, Native native) noexcept;
};

}  // namespace factory::basic

namespace factory::impl {

/// The living native behind a 1-by-1 handle object. Raises "Vexal:class:InvalidHandle" when
/// it is gone or was never there, "Vexal:class:NotAnObject" for anything but such an object.
VEXAL_API Native validateSelfPointer(const vxArray* object);

/// The same, but empty instead of an error, whatever the array; for natives of one family.
VEXAL_API Native nativeOf(const vxArray* object, const NativeFamily& family) noexcept;

/// The natives of an array that was made of many of one family (announceAll), living or not;
/// none of any other array. Valid until the array is changed or released.
VEXAL_API std::span<void* const> nativesOf(const vxArray* objects,
                                           const NativeFamily& family) noexcept;

}  // namespace factory::impl
}  // namespace vcos
