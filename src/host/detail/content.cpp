#include "host/detail/content.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "host/detail/pool.h"
#include "host/object.h"
#include "host/text.h"

namespace vexal::detail {
namespace {

// Enough for a 1-by-1 double, of which studies hold millions.
constexpr std::size_t kScalarSize = sizeof(Content) + sizeof(double);
static_assert(kScalarSize == 16);

// Enough for short texts.
constexpr std::size_t kSmallSize = 32;

// Enough for one object, with fields, a native or a value, and for a short block of them.
constexpr std::size_t kObjectSize = 64;
static_assert(sizeof(Content) + 2 * sizeof(std::size_t) + sizeof(NativeHead) + sizeof(void*) ==
              kObjectSize);

constinit Pool<kScalarSize> scalarBlocks;
constinit Pool<kSmallSize> smallBlocks;
constinit Pool<kObjectSize> objectBlocks;
constinit std::size_t contentCount = 0;

// What cells and fields hold until they are given something.
struct EmptyDouble {
  Content content{kImmortal, ClassId::Double, Layout::Elements, 2};
  std::size_t dims[2]{0, 0};
};
constinit EmptyDouble emptyDouble;

constexpr std::size_t elementSize(ClassId classId) noexcept {
  switch (classId) {
    case ClassId::Double: return sizeof(double);
    case ClassId::Logical: return sizeof(bool);
    case ClassId::Char: return sizeof(char16_t);
    case ClassId::Int32: return sizeof(std::int32_t);
    default: return sizeof(vxArray);
  }
}

// Trailing dimensions of 1 are not kept: 3-by-2-by-1 is 3-by-2, and 1-by-1 needs none.
Dims significant(Dims dims) {
  if (dims.size() < 2) fail("TooFewDimensions", {std::to_string(dims.size())});
  while (dims.size() > 2 && dims.back() == 1) dims = dims.first(dims.size() - 1);
  if (dims.size() == 2 && dims[0] == 1 && dims[1] == 1) return {};
  if (dims.size() > std::numeric_limits<std::uint16_t>::max()) {
    fail("TooManyDimensions", {std::to_string(dims.size())});
  }
  return dims;
}

// offset + unit * (product of the dimensions), refused when it does not fit.
std::size_t checkedSize(std::size_t offset, std::size_t unit, Dims dims) {
  constexpr auto kLimit = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
  std::size_t count = std::ranges::count(dims, std::size_t{0}) > 0 ? 0 : 1;
  std::size_t size = 0;
  bool isTooLarge = false;
  for (const std::size_t dim : dims) {
    isTooLarge |= count > 0 && __builtin_mul_overflow(count, dim, &count);
  }
  isTooLarge |= __builtin_mul_overflow(count, unit, &size);
  isTooLarge |= __builtin_add_overflow(size, offset, &size);
  if (isTooLarge || size > kLimit) fail("TooManyElements", {sizeInWords(dims)});
  return size;
}

std::size_t offsetOfElements(Layout layout, std::size_t rank) noexcept {
  return sizeof(Content) + rank * sizeof(std::size_t) + headSize(layout);
}

// The array elements that belong to one element: a cell's one, a struct's field values.
std::size_t childrenPerElement(const Content& content) noexcept {
  switch (content.layout) {
    case Layout::Elements: return content.classId == ClassId::Cell ? 1 : 0;
    case Layout::Fields: return recordOf(content).names->size();
    case Layout::Objects: return 1;
    default: return 0;
  }
}

std::size_t bytesPerElement(const Content& content) noexcept {
  switch (content.layout) {
    case Layout::Elements: return elementSize(content.classId);
    case Layout::Natives: return sizeof(void*);
    case Layout::Values: return sizeof(std::int32_t);
    default: return childrenPerElement(content) * sizeof(vxArray);
  }
}

std::size_t bytesOfElements(const Content& content) noexcept {
  return countOf(content) * bytesPerElement(content);
}

void* takeBlock(std::size_t size) {
  if (size <= kScalarSize) return scalarBlocks.take();
  if (size <= kSmallSize) return smallBlocks.take();
  return size <= kObjectSize ? objectBlocks.take() : allocateToFill(size);
}

void giveBlock(void* block, std::size_t size) noexcept {
  if (size <= kScalarSize) {
    scalarBlocks.give(block);
  } else if (size <= kSmallSize) {
    smallBlocks.give(block);
  } else {
    size <= kObjectSize ? objectBlocks.give(block) : std::free(block);
  }
}

// A block with its dimensions and the given bytes for each element, which are not set.
ContentRef newBlock(ClassId classId, Layout layout, Dims given, std::size_t unit, Fill fill) {
  requireHostThread();
  const Dims dims = significant(given);
  const std::size_t offset = offsetOfElements(layout, dims.size());
  const std::size_t size = checkedSize(offset, unit, dims);
  void* memory = nullptr;
  if (fill == Fill::None || size <= kObjectSize) {
    memory = takeBlock(size);
    if (fill == Fill::Zero) std::memset(static_cast<std::byte*>(memory) + offset, 0, size - offset);
  } else {
    memory = std::calloc(size, 1);
    if (memory == nullptr) fail("OutOfMemory");
  }
  auto* const content =
      new (memory) Content{1, classId, layout, static_cast<std::uint16_t>(dims.size())};
  std::ranges::copy(dims, keptDimsOf(content));
  ++contentCount;
  return ContentRef(content);
}

void freeBlock(Content* content) noexcept {
  const std::size_t size =
      offsetOfElements(content->layout, content->rank) + bytesOfElements(*content);
  if (content->layout == Layout::Fields) headOf<Record>(content).~Record();
  if (content->layout == Layout::Natives) releaseNatives(content);
  --contentCount;
  giveBlock(content, size);
}

void fillWith(std::span<vxArray> children, Content* initial) noexcept {
  for (vxArray& child : children) {
    child = {share(initial), static_cast<std::uintptr_t>(Role::Element)};
  }
}

bool isPlain(const Content& content) noexcept {
  return content.layout == Layout::Elements && content.classId != ClassId::Cell;
}

// The same for numbers, logicals and characters, the most frequent by far.
void freePlainBlock(Content* content) noexcept {
  --contentCount;
  giveBlock(content, sizeof(Content) + content->rank * sizeof(std::size_t) +
                         countOf(*content) * elementSize(content->classId));
}

bool dropReference(Content* content) noexcept {
  return content->references != kImmortal && --content->references == 0;
}

// Content that is about to be freed waits in a list linked through a child's tag, so that
// nesting of any depth needs no stack. Only content with children is ever linked.
void freeDead(Content* content) noexcept {
  Content* waiting = nullptr;
  for (;;) {
    for (const vxArray& child : childrenOf(content)) {
      if (!dropReference(child.content)) continue;
      const std::span<vxArray> grandchildren = childrenOf(child.content);
      if (grandchildren.empty()) {
        freeDead(child.content);
      } else {
        grandchildren[0].tag = reinterpret_cast<std::uintptr_t>(waiting);
        waiting = child.content;
      }
    }
    freeBlock(content);
    if (waiting == nullptr) return;
    content = waiting;
    waiting = reinterpret_cast<Content*>(childrenOf(content)[0].tag);
  }
}

}  // namespace

std::span<vxArray> childrenOf(Content* content) noexcept {
  return {static_cast<vxArray*>(elementsOf(content)),
          countOf(*content) * childrenPerElement(*content)};
}

void release(Content* content) noexcept {
  if (!dropReference(content)) return;
  isPlain(*content) ? freePlainBlock(content) : freeDead(content);
}

std::size_t liveContents() noexcept { return contentCount; }

ContentRef newPlainContent(ClassId classId, Dims dims, Fill fill) {
  return newBlock(classId, Layout::Elements, dims, elementSize(classId), fill);
}

ContentRef newScalarContent(ClassId classId) {
  requireHostThread();
  Content* const content = new (scalarBlocks.take()) Content{1, classId, Layout::Elements, 0};
  ++contentCount;
  return ContentRef(content);
}

ContentRef newCellContent(Dims dims) {
  ContentRef content = newBlock(ClassId::Cell, Layout::Elements, dims, sizeof(vxArray), Fill::None);
  fillWith(childrenOf(content.get()), &emptyDouble.content);
  return content;
}

ContentRef newRecordContent(ClassId classId, Dims dims, Record record) {
  const std::size_t unit = sizeof(vxArray) * record.names->size();
  ContentRef content = newBlock(classId, Layout::Fields, dims, unit, Fill::None);
  new (&headOf<Record>(content.get())) Record(std::move(record));
  fillWith(childrenOf(content.get()), &emptyDouble.content);
  return content;
}

ContentRef newObjectArrayContent(const HostClass& hostClass, Dims dims, Content* initial) {
  ContentRef content =
      newBlock(ClassId::Object, Layout::Objects, dims, sizeof(vxArray), Fill::None);
  new (&headOf<ObjectHead>(content.get())) ObjectHead{&hostClass};
  fillWith(childrenOf(content.get()), initial);
  return content;
}

ContentRef newValueContent(const HostClass& hostClass, Dims dims) {
  ContentRef content =
      newBlock(ClassId::Object, Layout::Values, dims, sizeof(std::int32_t), Fill::Zero);
  new (&headOf<ObjectHead>(content.get())) ObjectHead{&hostClass};
  return content;
}

ContentRef newNativeContent(const NativeHead& head, Dims dims) {
  ContentRef content = newBlock(ClassId::Object, Layout::Natives, dims, sizeof(void*), Fill::Zero);
  new (&headOf<NativeHead>(content.get())) NativeHead(head);
  return content;
}

ContentRef newHandleContent(const HostClass& hostClass) {
  requireHostThread();
  auto* const content = new (objectBlocks.take()) Content{1, ClassId::Object, Layout::Natives, 0};
  new (&headOf<NativeHead>(content)) NativeHead{{&hostClass}};
  *static_cast<void**>(elementsOf(content)) = nullptr;
  ++contentCount;
  return ContentRef(content);
}

// Not for natives: what stands for them is never changed, only replaced.
ContentRef cloneContent(const Content& content) {
  ContentRef clone = newBlock(content.classId, content.layout, dimsOf(content),
                              bytesPerElement(content), Fill::None);
  if (content.layout == Layout::Fields) {
    new (&headOf<Record>(clone.get())) Record(recordOf(content));
  } else if (content.layout != Layout::Elements) {
    new (&headOf<ObjectHead>(clone.get())) ObjectHead(headOf<ObjectHead>(content));
  }
  const std::size_t bytes = bytesOfElements(content);
  if (bytes > 0) std::memcpy(elementsOf(clone.get()), elementsOf(content), bytes);
  for (const vxArray& child : childrenOf(content)) share(child.content);
  return clone;
}

Content* uniqueContentOf(vxArray* array) {
  const Content& content = contentOf(array);
  if (content.references != 1) replaceContent(array, cloneContent(content));
  return array->content;
}

void failWrongClass(std::string_view expected, const vxArray* given) {
  fail("WrongClass", {expected, describe(given)});
}

void requireIndex(std::size_t index, std::size_t count) {
  if (index >= count) fail("IndexOutOfRange", {std::to_string(index), std::to_string(count)});
}

}  // namespace vexal::detail
