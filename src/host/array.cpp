// Headers of arrays: making, counting and releasing them, on and off the host's thread.
#include "host/array.h"

#include <atomic>

#include "host/detail/content.h"
#include "host/detail/pool.h"

namespace vexal {
namespace detail {
namespace {

constexpr std::uintptr_t kRoleBits = 15;  // headers are 16-byte aligned

constinit Pool<sizeof(vxArray)> headers;
constinit ArrayCounts counts;
constinit std::atomic<std::uint64_t> misusedReleases{0};

// Arrays released on other threads or during a pause, linked through their tags.
constinit std::atomic<vxArray*> putAside{nullptr};
constinit std::size_t pauses = 0;

Role roleOf(const vxArray& array) noexcept { return static_cast<Role>(array.tag & kRoleBits); }

std::uintptr_t tagOf(const vxArray* link, Role role) noexcept {
  return reinterpret_cast<std::uintptr_t>(link) | static_cast<std::uintptr_t>(role);
}

void countNew(Role role) noexcept {
  if (role == Role::Property) {
    ++counts.livePropertyCopies;
    ++counts.propertyCopiesMade;
  } else {
    ++counts.live;
  }
}

void countReleased(Role role) noexcept {
  if (role == Role::Property) {
    --counts.livePropertyCopies;
    ++counts.propertyCopiesReleased;
  } else {
    --counts.live;
  }
}

void releaseHere(vxArray* array, Role role) noexcept {
  countReleased(role);
  Content* const content = array->content;
  array->tag = static_cast<std::uintptr_t>(Role::Free);
  headers.give(array);
  release(content);
}

void releaseLater(vxArray* array, Role role) noexcept {
  const Role mark = role == Role::Property ? Role::PropertyReleased : Role::Released;
  vxArray* first = putAside.load(std::memory_order_relaxed);
  do {
    array->tag = tagOf(first, mark);
  } while (!putAside.compare_exchange_weak(first, array, std::memory_order_release,
                                           std::memory_order_relaxed));
}

void releasePutAside() noexcept {
  vxArray* next = putAside.exchange(nullptr, std::memory_order_acquire);
  while (next != nullptr) {
    vxArray* const array = next;
    next = reinterpret_cast<vxArray*>(array->tag & ~kRoleBits);
    releaseHere(array, roleOf(*array) == Role::PropertyReleased ? Role::Property : Role::Plain);
  }
}

void releaseAs(Role role, vxArray* array) noexcept {
  if (array == nullptr) return;
  if (roleOf(*array) != role) {
    ++misusedReleases;
  } else if (onHostThread() && pauses == 0) {
    releaseHere(array, role);
  } else {
    releaseLater(array, role);
  }
}

}  // namespace

vxArray* newHeader(ContentRef content, Role role) {
  if (putAside.load(std::memory_order_relaxed) != nullptr && pauses == 0) [[unlikely]]
    releasePutAside();
  void* const memory = headers.take();
  countNew(role);
  return new (memory) vxArray{content.release(), static_cast<std::uintptr_t>(role)};
}

}  // namespace detail

void destroy(vxArray* array) noexcept { detail::releaseAs(detail::Role::Plain, array); }

void deletePropertyArray(vxArray* array) noexcept {
  detail::releaseAs(detail::Role::Property, array);
}

ReleasePause::ReleasePause() noexcept : counts_(detail::onHostThread()) {
  detail::pauses += counts_;
}

ReleasePause::~ReleasePause() {
  if (counts_ && --detail::pauses == 0) detail::releasePutAside();
}

ArrayPtr deepCopy(const vxArray* array) {
  detail::contentOf(array);
  return detail::newArray(detail::ContentRef(detail::share(array->content)));
}

PropertyArrayPtr copyForProperty(const vxArray* array) {
  if (array == nullptr) return nullptr;
  detail::requireHostThread();
  detail::ContentRef content(detail::share(array->content));
  return PropertyArrayPtr(detail::newHeader(std::move(content), detail::Role::Property));
}

bool sharesContent(const vxArray* a, const vxArray* b) noexcept {
  return a == b || (a != nullptr && b != nullptr && a->content == b->content);
}

ArrayCounts arrayCounts() {
  detail::requireHostThread();
  detail::releasePutAside();
  ArrayCounts now = detail::counts;
  now.contents = detail::liveContents();
  now.misusedReleases = detail::misusedReleases;
  return now;
}

}  // namespace vexal
