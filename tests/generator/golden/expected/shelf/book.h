// Generated from shelf/shelf.toml.
#pragma once

#include "framework/element_class.h"
#include "shelf/cover.h"
#include "shelf/export.h"

namespace shelf {

class OakBoard;

/// A book.
class SHELF_API Book : public mf::zero::ConcreteHandle<Book> {
 public:
  using ConcreteHandle::ConcreteHandle;

  /// What is on its back.
  std::u16string title() const { return (*this)->getTitle(); }
  static std::u16string title(const Book& self) { return self.title(); }
  /// What it is bound in.
  Cover cover() const { return (*this)->getCover(); }
  static Cover cover(const Book& self) { return self.cover(); }
  /// A picture of its back.
  const vxArray* scan() const { return (*this)->getScan(); }
  static const vxArray* scan(const Book& self) { return self.scan(); }
  /// Where it belongs.
  OakBoard board() const;
  static OakBoard board(const Book& self);

  struct Builder : mf::zero::TypedBuilder<Book> {
    using TypedBuilder::TypedBuilder;
    Builder& setTitle(std::u16string_view value) { return set<Impl>(0, value); }
    Builder& setCover(Cover value) { return set<Impl>(1, value); }
    Builder& setScan(const vxArray* value) { return set<Impl>(2, value); }
    Builder& setBoard(const OakBoard& value);
  };

  struct Constrainables : mf::zero::Constrainables {
    using mf::zero::Constrainables::Constrainables;
    mf::zero::query::TextConstraint title{*this, Impl::kProperties[0]};
    mf::zero::query::EnumConstraint<Cover> cover{*this, Impl::kProperties[1]};
    mf::zero::query::ArrayConstraint scan{*this, Impl::kProperties[2]};
    mf::zero::query::ReferenceConstraint board{*this, Impl::kProperties[3]};
  };

  struct SHELF_API Impl : mf::zero::ElementImpl {
    struct Storage : ElementImpl::Storage {
      mf::zero::Text title;
      Cover cover{};
      mf::zero::ArraySlot scan;
      mf::zero::ReferenceSlot board;
    };
    static const mf::zero::PropertyInfo kProperties[4];
    static const mf::zero::ClassInfo kClass;
    using ElementImpl::ElementImpl;

    const std::u16string& getTitle() const { return read<Storage>().title.str(); }
    void setTitle(std::u16string_view value) { assign(kProperties[0], &Storage::title, value); }
    bool hasTitle() const { return has(kProperties[0]); }
    Cover getCover() const { return read<Storage>().cover; }
    void setCover(Cover value) { assign(kProperties[1], &Storage::cover, value); }
    bool hasCover() const { return has(kProperties[1]); }
    const vxArray* getScan() const { return read<Storage>().scan.array; }
    void setScan(const vxArray* value) { assign(kProperties[2], &Storage::scan, value); }
    bool hasScan() const { return has(kProperties[2]); }
    /// Refuses an array by throwing; written by hand.
    void aboutToSetScan(const vxArray* proposed) const;
    OakBoard getBoard() const;
    void setBoard(const OakBoard& value);
    bool hasBoard() const { return has(kProperties[3]); }

    struct BuilderImpl : mf::zero::BuilderBase<Builder> {
      using BuilderBase::BuilderBase;
      void doSetTitle(std::u16string_view value) { set(kProperties[0], value); }
      std::u16string getTitle() const { return get<std::u16string>(kProperties[0]); }
      void doSetCover(Cover value) { set(kProperties[1], value); }
      Cover getCover() const { return get<Cover>(kProperties[1]); }
      void doSetScan(const vxArray* value) { set(kProperties[2], value); }
      mf::zero::Value getScan() const { return get(kProperties[2]); }
      void doSetBoard(const OakBoard& value);
      OakBoard getBoard() const;
    };
  };
};

}  // namespace shelf

#include "shelf/oak_board.h"
