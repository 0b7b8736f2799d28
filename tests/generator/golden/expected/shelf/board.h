// Generated from shelf/shelf.toml.
#pragma once

#include "framework/element_class.h"
#include "shelf/export.h"

namespace shelf {

class Book;

/// A board of a shelf.
class SHELF_API Board : public mf::zero::Handle<Board> {
 public:
  using Handle::Handle;

  /// In metres.
  double width() const { return (*this)->getWidth(); }
  static double width(const Board& self) { return self.width(); }
  /// What it carries, in kilograms.
  double load() const { return (*this)->getLoad(); }
  static double load(const Board& self) { return self.load(); }

  struct Constrainables : mf::zero::Constrainables {
    using mf::zero::Constrainables::Constrainables;
    mf::zero::query::RealConstraint width{*this, Impl::kProperties[0]};
    mf::zero::query::RealConstraint load{*this, Impl::kProperties[1]};
  };

  struct SHELF_API Impl : mf::zero::ElementImpl {
    struct Storage : ElementImpl::Storage {
      double width = 0.0;
    };
    static const mf::zero::PropertyInfo kProperties[2];
    static const mf::zero::OperationInfo kOperations[1];
    static const mf::zero::ClassInfo kClass;
    using ElementImpl::ElementImpl;

    double getWidth() const { return read<Storage>().width; }
    void setWidth(double value) { assign(kProperties[0], &Storage::width, value); }
    bool hasWidth() const { return has(kProperties[0]); }
    double getLoad() const;  // written by hand
    bool hasLoad() const { return has(kProperties[1]); }
    /// What weighs most on it.
    virtual Book heaviest() const = 0;

    struct BuilderImpl : mf::zero::BuilderBase<Builder> {
      using BuilderBase::BuilderBase;
      void doSetWidth(double value) { set(kProperties[0], value); }
      double getWidth() const { return get<double>(kProperties[0]); }
    };
  };
};

}  // namespace shelf

#include "shelf/book.h"
