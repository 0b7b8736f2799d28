// Generated: package shelf as scripts see it.
#include "binding/shelf.h"

namespace shelf::mi {

using namespace mf::zero::mi;
using vcos::factory::ClassTable;
using vcos::factory::PropertyRow;
using vcos::factory::VcosMethod;

static constexpr PropertyRow kBoardProperties[] = {
    elementProperty("Width", Board::Impl::kProperties[0], "In metres."),
    elementProperty("Load", Board::Impl::kProperties[1], "What it carries, in kilograms."),
};
static constexpr VcosMethod kBoardMethods[] = {
    BoardWrapper::Heaviest("heaviest", "shelf.Book", "shelf.Board", "What weighs most on it."),
};
constinit const ClassTable BoardWrapper::kTable = describeAbstract(
    "shelf.Board", "mf.zero.ModelElement", "A board of a shelf.", kBoardProperties, kBoardMethods);

static constexpr PropertyRow kBookProperties[] = {
    elementProperty("Title", Book::Impl::kProperties[0], "What is on its back."),
    elementProperty("Cover", Book::Impl::kProperties[1], "What it is bound in."),
    PrimitiveProperty("Scan", Book::Impl::kProperties[2], "A picture of its back."),
    elementProperty("Board", Book::Impl::kProperties[3], "Where it belongs."),
};
static constexpr VcosMethod kBookMethods[] = {
    BookWrapper::Construct("Book", "shelf.Book"),
};
constinit const ClassTable BookWrapper::kTable =
    describeClass("shelf.Book", "mf.zero.ModelElement", "A book.", kBookProperties, kBookMethods);

static constexpr PropertyRow kOakBoardProperties[] = {
    elementProperty("Books", OakBoard::Impl::kProperties[0], "What stands on it."),
    elementProperty("Below", OakBoard::Impl::kProperties[1], "The boards that it rests on."),
    elementProperty("Heights", OakBoard::Impl::kProperties[2], "Where its holes are, in metres."),
};
static constexpr VcosMethod kOakBoardMethods[] = {
    OakBoardWrapper::Construct("OakBoard", "shelf.OakBoard"),
    OakBoardWrapper::CreateIntoBooks("createIntoBooks", "shelf.Book", "shelf.OakBoard, any, any"),
    OakBoardWrapper::Heaviest("heaviest", "shelf.Book", "shelf.OakBoard",
                              "What weighs most on it."),
};
constinit const ClassTable OakBoardWrapper::kTable = describeClass(
    "shelf.OakBoard", "shelf.Board", "A board of oak.", kOakBoardProperties, kOakBoardMethods);

static constexpr vcos::COSEnumInfo kCoverMembers[] = {
    MF0EnumValueInfo<Cover>("Cloth", Cover::Cloth, "Cloth over boards."),
    MF0EnumValueInfo<Cover>("Paper", Cover::Paper, "Paper."),
};
static constexpr VcosMethod kCoverMethods[] = {
    Ctor<Cover>("Cover", "shelf.Cover"),
};
constinit const ClassTable CoverWrapper::kTable =
    describeEnum("shelf.Cover", "What a book is bound in.", kCoverMethods, kCoverMembers);

}  // namespace shelf::mi

namespace mi {

void shelfPackage::initializePackage(vcos::COSPackage* package) {
  using namespace shelf;
  using namespace shelf::mi;
  addClass<BoardWrapper>(package);
  addClass<BookWrapper>(package);
  addClass<OakBoardWrapper>(package);
  addEnum<CoverWrapper, Cover>(package);
}

}  // namespace mi
