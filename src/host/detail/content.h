// The content of arrays: counted blocks that copies share.
//
// A vxArray is a header of two words that refers to a content block. A block is one
// allocation: class and layout, the dimensions, for structs and objects a head, then the
// elements. Elements that are arrays are headers lying in the block itself, so a cell costs
// 16 bytes per element and its elements can be lent out as arrays.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/array.h"
#include "host/detail/messages.h"
#include "host/detail/thread.h"

namespace vexal {
class NativePayload;
}
namespace vcos {
struct NativeFamily;
}

namespace vexal::detail {

struct HostClass;
struct Content;

using FieldNames = std::vector<std::string>;

/// What an array was handed out as; kept in the low bits of its header's tag.
enum class Role : std::uintptr_t { Free, Plain, Property, Element, Released, PropertyReleased };

}  // namespace vexal::detail

struct vxArray {
  vexal::detail::Content* content;
  std::uintptr_t tag;
};

namespace vexal::detail {

/// What lies behind the dimensions.
enum class Layout : std::uint8_t {
  Elements,  ///< numbers, logicals, characters, or the arrays of a cell
  Fields,    ///< a Record, then the field values of structs or of one object
  Objects,   ///< an ObjectHead, then one array per object
  Natives,   ///< a NativeHead, then an address each: a handle object or a block of natives
  Values,    ///< an ObjectHead, then an int32 per object
};

struct Content {
  std::uint32_t references;
  ClassId classId;
  Layout layout;
  std::uint16_t rank;  ///< how many dimensions are kept: none of what is 1-by-1
  // std::size_t[rank], then the head of the layout, then the elements
};

/// What all objects begin with.
struct ObjectHead {
  const HostClass* hostClass = nullptr;  // null for structs
};

/// What structs and objects with fields have besides their elements.
struct Record : ObjectHead {
  std::shared_ptr<const FieldNames> names;
  std::shared_ptr<NativePayload> payload;  // objects only
};

/// What one handle object or a block of natives has besides their addresses.
struct NativeHead : ObjectHead {
  enum class State : std::uint8_t { Block, Paired, Removed };
  const vcos::NativeFamily* family = nullptr;
  const void* part = nullptr;
  State state = State::Removed;
};

/// A count that has come this far stays: such content lives for ever.
inline constexpr std::uint32_t kImmortal = 0xffffffff;

// Access within a block ---------------------------------------------------------------

inline constexpr std::size_t kOneByOne[] = {1, 1};

inline std::size_t* keptDimsOf(Content* content) noexcept {
  return reinterpret_cast<std::size_t*>(content + 1);
}
inline Dims dimsOf(const Content& content) noexcept {
  if (content.rank == 0) return kOneByOne;
  return {keptDimsOf(const_cast<Content*>(&content)), content.rank};
}
inline std::size_t countOf(const Content& content) noexcept {
  std::size_t count = 1;
  for (std::size_t i = 0; i < content.rank; ++i) {
    count *= keptDimsOf(const_cast<Content*>(&content))[i];
  }
  return count;
}
inline std::byte* afterDims(Content* content) noexcept {
  return reinterpret_cast<std::byte*>(keptDimsOf(content) + content->rank);
}

constexpr std::size_t headSize(Layout layout) noexcept {
  switch (layout) {
    case Layout::Elements: return 0;
    case Layout::Fields: return sizeof(Record);
    case Layout::Natives: return sizeof(NativeHead);
    default: return sizeof(ObjectHead);
  }
}

/// The head, which must be that of the layout.
template <class Head>
Head& headOf(Content* content) noexcept {
  return *reinterpret_cast<Head*>(afterDims(content));
}
template <class Head>
const Head& headOf(const Content& content) noexcept {
  return headOf<Head>(const_cast<Content*>(&content));
}
inline const Record& recordOf(const Content& content) noexcept { return headOf<Record>(content); }

inline void* elementsOf(Content* content) noexcept {
  return afterDims(content) + headSize(content->layout);
}
inline const void* elementsOf(const Content& content) noexcept {
  return elementsOf(const_cast<Content*>(&content));
}

/// The class of an object or of the objects of an array.
inline const HostClass& classOf(const Content& content) noexcept {
  return *headOf<ObjectHead>(content).hostClass;
}

/// Whether it is a 1-by-1 object.
inline bool isOneObject(const Content& content) noexcept {
  if (content.classId != ClassId::Object || content.layout == Layout::Objects) return false;
  if (content.layout == Layout::Natives) {
    return headOf<NativeHead>(content).state != NativeHead::State::Block;
  }
  return content.layout == Layout::Fields || countOf(content) == 1;
}

/// The elements that are arrays: those of cells and object arrays, and field values,
/// element by element. None for the other classes.
std::span<vxArray> childrenOf(Content* content) noexcept;
inline std::span<const vxArray> childrenOf(const Content& content) noexcept {
  return childrenOf(const_cast<Content*>(&content));
}

// Counting ----------------------------------------------------------------------------

inline Content* share(Content* content) noexcept {
  if (content->references != kImmortal) ++content->references;
  return content;
}

/// Gives back one reference; frees the block with the last one, however deep it nests.
void release(Content* content) noexcept;

/// One reference to a content block.
class ContentRef {
 public:
  ContentRef() = default;
  explicit ContentRef(Content* adopted) noexcept : content_(adopted) {}
  ContentRef(ContentRef&& other) noexcept : content_(std::exchange(other.content_, nullptr)) {}
  ContentRef& operator=(ContentRef&& other) noexcept {
    std::swap(content_, other.content_);
    return *this;
  }
  ~ContentRef() {
    if (content_ != nullptr) detail::release(content_);
  }
  Content* get() const noexcept { return content_; }
  Content* operator->() const noexcept { return content_; }
  Content* release() noexcept { return std::exchange(content_, nullptr); }

 private:
  Content* content_ = nullptr;
};

/// The content blocks in existence.
std::size_t liveContents() noexcept;

// Making ------------------------------------------------------------------------------

enum class Fill { Zero, None };

/// A block of numbers, logicals or characters.
ContentRef newPlainContent(ClassId classId, Dims dims, Fill fill);
/// The same for a single one, which is not set.
ContentRef newScalarContent(ClassId classId);

/// A block of arrays, every one an empty 0-by-0 double (or sharing `initial`).
ContentRef newCellContent(Dims dims);
ContentRef newRecordContent(ClassId classId, Dims dims, Record record);
ContentRef newObjectArrayContent(const HostClass& hostClass, Dims dims, Content* initial);

/// Objects of a value class, every integer 0, and addresses that are not set yet.
ContentRef newValueContent(const HostClass& hostClass, Dims dims);
ContentRef newNativeContent(const NativeHead& head, Dims dims);
/// One handle object, which stands for nothing yet.
ContentRef newHandleContent(const HostClass& hostClass);

/// Gives back what a block of natives holds, on its way out.
void releaseNatives(Content* content) noexcept;

/// A block of its own with the same content.
ContentRef cloneContent(const Content& content);

// Headers -----------------------------------------------------------------------------

/// A new array that holds the content.
vxArray* newHeader(ContentRef content, Role role);
inline ArrayPtr newArray(ContentRef content) {
  return ArrayPtr(newHeader(std::move(content), Role::Plain));
}

/// The content of an array that is there, on the host's thread.
inline const Content& contentOf(const vxArray* array) {
  requireHostThread();
  if (array == nullptr) [[unlikely]]
    fail("NullArray");
  return *array->content;
}

/// The content for changing, parted from its copies.
Content* uniqueContentOf(vxArray* array);

/// Puts another content in the place of the array's own.
inline void replaceContent(vxArray* array, ContentRef content) noexcept {
  ContentRef old(std::exchange(array->content, content.release()));
}

// Errors ------------------------------------------------------------------------------

/// "2-by-3".
std::string sizeInWords(Dims dims);

[[noreturn]] void failWrongClass(std::string_view expected, const vxArray* given);
void requireIndex(std::size_t index, std::size_t count);

}  // namespace vexal::detail
