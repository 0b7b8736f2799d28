// Generated from shelf/shelf.toml.
#pragma once

#include "framework/value.h"
#include "shelf/export.h"

namespace shelf {

/// What a book is bound in.
enum class Cover : std::int32_t {
  Cloth = 1,  ///< Cloth over boards.
  Paper = 2,  ///< Paper.
};

}  // namespace shelf

template <>
struct SHELF_API mf::zero::EnumTraits<shelf::Cover> {
  static const EnumInfo kInfo;
  static const EnumInfo& info() { return kInfo; }
};
