// Generated from shelf/shelf.toml.
#pragma once

#include "framework/element_class.h"
#include "shelf/board.h"
#include "shelf/export.h"

namespace shelf {

class Book;

/// A board of oak.
class SHELF_API OakBoard : public mf::zero::ConcreteHandle<OakBoard, Board> {
 public:
  using ConcreteHandle::ConcreteHandle;

  /// What stands on it.
  const mf::zero::ElementSequence<Book> books() const { return (*this)->getBooks(); }
  static const mf::zero::ElementSequence<Book> books(const OakBoard& self) { return self.books(); }
  /// The boards that it rests on.
  const mf::zero::WithProxies<Board::Sequence> below() const { return (*this)->getBelow(); }
  static const mf::zero::WithProxies<Board::Sequence> below(const OakBoard& self) {
    return self.below();
  }
  /// Where its holes are, in metres.
  const mf::zero::PrimitiveSequence<double> heights() const { return (*this)->getHeights(); }
  static const mf::zero::PrimitiveSequence<double> heights(const OakBoard& self) {
    return self.heights();
  }

  struct Builder : mf::zero::TypedBuilder<OakBoard> {
    using TypedBuilder::TypedBuilder;
    Builder& setWidth(double value) { return set<Board::Impl>(0, value); }
    Builder& addBooks(mf::zero::BuilderWrapper<Book> value) {
      return add<Impl>(0, value.release());
    }
    Builder& addBelow(const Board& value) { return add<Impl>(1, value); }
    Builder& addHeights(double value) { return add<Impl>(2, value); }
    Builder& addHeights(std::span<const double> values) { return add<Impl>(2, values); }
  };

  struct Constrainables : Board::Constrainables {
    using Board::Constrainables::Constrainables;
    mf::zero::query::CollectionConstraint books{*this, Impl::kProperties[0]};
    mf::zero::query::CollectionConstraint below{*this, Impl::kProperties[1]};
    mf::zero::query::PrimitiveCollectionConstraint<double> heights{*this, Impl::kProperties[2]};
  };

  struct SHELF_API Impl : Board::Impl {
    struct Storage : Board::Impl::Storage {
      mf::zero::ReferenceList books, below;
      mf::zero::PrimitiveList heights;
    };
    static const mf::zero::PropertyInfo kProperties[3];
    static const mf::zero::ClassInfo kClass;
    using Board::Impl::Impl;

    const mf::zero::ElementSequence<Book> getBooks() const { return {this, kProperties[0]}; }
    mf::zero::ElementSequence<Book> getBooksMutable() { return {this, kProperties[0]}; }
    bool hasBooks() const { return has(kProperties[0]); }
    Book createIntoBooks(mf::zero::BuilderWrapper<Book> value, mf::zero::uuid identity = {});
    const mf::zero::WithProxies<Board::Sequence> getBelow() const { return {this, kProperties[1]}; }
    mf::zero::WithProxies<Board::Sequence> getBelowMutable() { return {this, kProperties[1]}; }
    bool hasBelow() const { return has(kProperties[1]); }
    const mf::zero::PrimitiveSequence<double> getHeights() const { return {this, kProperties[2]}; }
    mf::zero::PrimitiveSequence<double> getHeightsMutable() { return {this, kProperties[2]}; }
    bool hasHeights() const { return has(kProperties[2]); }
    Book heaviest() const override;

    struct BuilderImpl : mf::zero::BuilderBase<Builder, Board::Impl::BuilderImpl> {
      using BuilderBase::BuilderBase;
      void doAddBooks(ChildBuilder child) { addChild(kProperties[0], std::move(child)); }
      void doClearBooks() { clear(kProperties[0]); }
      void doAddBelow(const Board& value) { add(kProperties[1], value); }
      void doClearBelow() { clear(kProperties[1]); }
      void doAddHeights(double value) { add(kProperties[2], value); }
      void doAddHeights(std::span<const double> values) { addAll(kProperties[2], values); }
      void doClearHeights() { clear(kProperties[2]); }
    };
  };
};

}  // namespace shelf

#include "shelf/book.h"
