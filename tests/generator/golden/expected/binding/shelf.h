// Generated: package shelf as scripts see it.
#pragma once

#include "framework/mi/class_description.h"
#include "framework/mi/element_methods.h"
#include "framework/mi/empty_parent_package.h"
#include "shelf/shelf.h"

namespace shelf::mi {

class BoardWrapper : public mf::zero::mi::HandleWrapper<Board> {
 public:
  using Heaviest = mf::zero::mi::Operation<&Board::Impl::heaviest>;
  BoardWrapper() : HandleWrapper(kTable) {}
  static const vcos::factory::ClassTable kTable;
};

class BookWrapper : public mf::zero::mi::HandleWrapper<Book> {
 public:
  using Construct = mf::zero::mi::Construct<Book>;
  BookWrapper() : HandleWrapper(kTable) {}
  static const vcos::factory::ClassTable kTable;
};

class OakBoardWrapper : public mf::zero::mi::HandleWrapper<OakBoard> {
 public:
  using Construct = mf::zero::mi::Construct<OakBoard>;
  using CreateIntoBooks = mf::zero::mi::CreateInto<&OakBoard::Impl::createIntoBooks>;
  using Heaviest = mf::zero::mi::Operation<&OakBoard::Impl::heaviest>;
  OakBoardWrapper() : HandleWrapper(kTable) {}
  static const vcos::factory::ClassTable kTable;
};

class CoverWrapper : public mf::zero::mi::EnumWrapper<Cover> {
 public:
  CoverWrapper() : EnumWrapper(kTable) {}
  static const vcos::factory::ClassTable kTable;
};

}  // namespace shelf::mi

namespace mi {

/// The host package "shelf".
class shelfPackage : public mf::zero::mi::EmptyParentPackage {
 public:
  using EmptyParentPackage::EmptyParentPackage;
  void initializePackage(vcos::COSPackage* package) override;
};

}  // namespace mi
