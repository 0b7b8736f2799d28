// Generated from shelf/shelf.toml.
#include "shelf/shelf.h"

#include "framework/class_table.h"
#include "shelf/meta_package_shelf.h"

// A storage begins with that of the superclass; both compilers lay it out as one would expect.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace shelf {

using namespace mf::zero::table;

static constexpr auto kRegister = &shelf::MetaPackageShelf::ensureRegistered;

constinit const PropertyInfo Board::Impl::kProperties[] = {
    table::property(kReal, u"Width", 1, offsetof(Storage, width), kClass,
                    "b9be3e12-1ae7-39f7-bbaf-e818a61d5f1d"_uuid, {.defaultValue = "0.6"}),
    table::property(kReal, u"Load", 0, 0, kClass, "14db4c33-0826-3cd6-aeb5-68205b805e37"_uuid,
                    {.flags = kOrdered | kUnique | kReadOnly | kDerived | kTransient,
                     .derive = table::call<&Impl::getLoad>}),
};
constinit const OperationInfo Board::Impl::kOperations[] = {
    table::operation(u"heaviest", "665c0b2c-d6fb-3a8d-b843-4e857b7913e1"_uuid, kPublic,
                     "shelf.Book", kOneResult, table::call<&Impl::heaviest>),
};
constinit const ClassInfo Board::Impl::kClass = table::describe(
    u"Board", "shelf.Board", "shelf::Board", "06b616b9-ac8d-3e06-a929-23ec85004bc9"_uuid,
    kModelElementClass, kAbstract, kProperties, kOperations, 1, 1, kRegister);

constinit const PropertyInfo Book::Impl::kProperties[] = {
    table::property(kString, u"Title", 1, offsetof(Storage, title), kClass,
                    "e7dacb0c-766c-3c95-88b3-c7470ef9a6f0"_uuid),
    table::property(table::enumeration<Cover>("shelf.Cover"), u"Cover", 2, offsetof(Storage, cover),
                    kClass, "8a7238f4-a3d8-32a2-88a6-71f6faccabae"_uuid, {.defaultValue = "Cloth"}),
    table::property(kArray, u"Scan", 3, offsetof(Storage, scan), kClass,
                    "098b1059-2c24-3c75-a95b-b76af7c734b7"_uuid,
                    {.check = table::check<&Impl::aboutToSetScan>}),
    table::property(table::element<OakBoard>("shelf.OakBoard"), u"Board", 4,
                    offsetof(Storage, board), kClass, "191acd27-e458-35a6-b528-1d23b5cc662d"_uuid),
};
constinit const ClassInfo Book::Impl::kClass = table::describe(
    u"Book", "shelf.Book", "shelf::Book", "2e03757f-74b0-30a8-a7f7-c79794418c6a"_uuid,
    kModelElementClass, nativeOf<Book>(), kProperties, {}, 1, 4, kRegister);

OakBoard Book::board() const { return (*this)->getBoard(); }

OakBoard Book::board(const Book& self) { return self.board(); }

OakBoard Book::Impl::getBoard() const { return element<OakBoard>(read<Storage>().board); }

void Book::Impl::setBoard(const OakBoard& value) { assign(kProperties[3], &Storage::board, value); }

void Book::Impl::BuilderImpl::doSetBoard(const OakBoard& value) { set(kProperties[3], value); }

OakBoard Book::Impl::BuilderImpl::getBoard() const { return getElement<OakBoard>(kProperties[3]); }

Book::Builder& Book::Builder::setBoard(const OakBoard& value) { return set<Impl>(3, value); }

constinit const PropertyInfo OakBoard::Impl::kProperties[] = {
    table::property(table::element<Book>("shelf.Book"), u"Books", 2, offsetof(Storage, books),
                    kClass, "40636d74-55af-39c1-9110-9a103eb2dfd4"_uuid,
                    {.flags = kMany | kContainment | kOrdered}),
    table::property(table::element<Board>("shelf.Board"), u"Below", 3, offsetof(Storage, below),
                    kClass, "b8976bd3-988c-3115-b4ee-fe0b8c64c801"_uuid,
                    {.flags = kMany | kOrdered | kWithProxies}),
    table::property(kReal, u"Heights", 4, offsetof(Storage, heights), kClass,
                    "6face7d5-6986-377a-8e66-b35fb442dd69"_uuid, {.flags = kMany | kOrdered}),
};
constinit const ClassInfo OakBoard::Impl::kClass = table::describe(
    u"OakBoard", "shelf.OakBoard", "shelf::OakBoard", "84ff4d5d-febc-317f-bfc4-c88e76a2080b"_uuid,
    Board::Impl::kClass, nativeOf<OakBoard>(), kProperties, {}, 2, 4, kRegister);

Book OakBoard::Impl::createIntoBooks(mf::zero::BuilderWrapper<Book> value, uuid identity) {
  return createInto(kProperties[0], value, identity);
}

}  // namespace shelf

namespace mf::zero {

using namespace literals;

static constexpr LiteralInfo kCoverLiterals[] = {
    {u"Cloth", 1, "44d5dbd9-0680-3dcd-b4cb-685e94550f2f"_uuid},
    {u"Paper", 2, "b9297a29-9604-378d-b9aa-5d35332b29f6"_uuid},
};
constinit const EnumInfo EnumTraits<shelf::Cover>::kInfo = {
    u"Cover", "shelf.Cover", "5525c059-b9f7-3922-9036-07b6cac9455f"_uuid, kCoverLiterals,
    &shelf::MetaPackageShelf::ensureRegistered};

}  // namespace mf::zero
