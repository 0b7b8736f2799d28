#include "framework/model.h"

#include <algorithm>
#include <atomic>

#include "framework/change_set.h"
#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "framework/references.h"
#include "framework/undo.h"
#include "framework/values.h"
#include "host/array.h"

namespace mf::zero {

namespace {

/// Observers that keep answering each other's changes would never end.
constexpr int kMostRounds = 10'000;

/// Not inlined: it would take registers from those that settle.
[[gnu::noinline]] std::exception_ptr doNotSettle() {
  try {
    reportException(mf0::messages::ObserversDoNotSettle());
  } catch (...) {
    return std::current_exception();
  }
}

/// An observer that is a function.
class FunctionObserver final : public Observer {
 public:
  explicit FunctionObserver(std::function<void(const ChangeSet&)> function)
      : function_(std::move(function)) {}
  void changed(const ChangeSet& changes) override { function_(changes); }

 private:
  std::function<void(const ChangeSet&)> function_;
};

}  // namespace

// Subscription

struct Subscription::Entry {
  ModelImpl* model;
  Observer* observer;
  std::unique_ptr<Observer> owned;
};

Subscription::Subscription(Subscription&& other) noexcept = default;

Subscription& Subscription::operator=(Subscription&& other) noexcept {
  if (this != &other) {
    end();
    entry_ = std::move(other.entry_);
  }
  return *this;
}

void Subscription::end() {
  if (!entry_) return;
  entry_->observer = nullptr;
  if (ModelImpl* model = entry_->model) model->dropEndedObservers();
  entry_.reset();
}

// Model

Model::Model(ModelImpl* impl) : impl_(impl) {
  if (impl_) impl_->addRef();
}

Model::~Model() {
  if (impl_) impl_->removeRef();
}

Model Model::create() { return Model(new ModelImpl(false)); }

Model Model::createShared() { return Model(new ModelImpl(true)); }

ModelImpl* Model::operator->() const {
  if (!impl_) [[unlikely]]
    reportException(mf0::messages::CannotUseEmptyHandle());
  return impl_;
}

Model::Thawer::Thawer(Model model) : model_(std::move(model)) { model_->freeze(0, 1); }

Model::Thawer::Thawer(Thawer&& other) noexcept = default;

Model::Thawer::~Thawer() {
  if (model_) model_->freeze(0, -1);
}

void Model::Freezer::freeze() const { model_->freeze(1, 0); }

void Model::Freezer::unfreeze() const { model_->setState(ModelImpl::kFrozen, false); }

// Transaction

Transaction::Transaction(ModelImpl& model, std::uint32_t depth)
    : model_(&model), depth_(depth), serial_(model.serialAt(depth)) {
  model.addRef();
}

Transaction::Transaction(Transaction&& other) noexcept
    : model_(std::exchange(other.model_, nullptr)), depth_(other.depth_), serial_(other.serial_) {}

Transaction::~Transaction() {
  if (!model_) return;
  // Inner transactions that are still open go with the outer one.
  while (isOpen()) model_->leave(false, std::nullopt);
  model_->removeRef();
}

bool Transaction::isOpen() const { return model_ && model_->serialAt(depth_) == serial_; }

void Transaction::end(bool keep, std::optional<Value> result) {
  if (!isOpen() || model_->depth_ != depth_) {
    reportException(mf0::messages::CannotEndTransaction());
  }
  model_->leave(keep, std::move(result));
}

void Transaction::commit(std::optional<Value> result) { end(true, std::move(result)); }

void Transaction::rollback() { end(false, std::nullopt); }

// ModelImpl: life

ModelImpl::ModelImpl(bool shared) : pool_(*this), identities_(pool_), shared_(shared) {
  log_ = new UndoLog(*this);
}

ModelImpl::~ModelImpl() {
  delete log_;
  while (spare_) delete std::exchange(spare_, spare_->next);
  for (const auto& entry : observers_) entry->model = nullptr;
}

void ModelImpl::addSharedRef() noexcept {
  std::atomic_ref(refs_).fetch_add(1, std::memory_order_relaxed);
}

void ModelImpl::removeSharedRef() noexcept {
  if (std::atomic_ref(refs_).fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

void ModelImpl::freeze(int freezes, int thaws) noexcept {
  toBeFrozen_ |= freezes > 0;
  thaws_ += thaws;
  setState(kFrozen, toBeFrozen_ && thaws_ == 0);
}

void ModelImpl::refuseWrite() const {
  if (!isOpen()) reportException(mf0::messages::CannotUseClosedModel());
  reportException(mf0::messages::CannotModifyFrozenModel());
}

void ModelImpl::close() {
  if (!isQuiet()) reportException(mf0::messages::CannotCloseModelInTransaction());
  const Model keep(this);
  // What ends with the elements may be foreign code, which must find the model closed.
  const std::shared_ptr<ElementLoader> loader = std::move(loader_);
  const vexal::ReleasePause pause;
  setState(kClosed, true);
  pool_.forEach([this](ElementImpl& element) {
    Raw::setDestroyed(element, true);
    undo::discard(*this, element);
  });
  liveElements_ = 0;
  identities_.clear();
  lists_.clear();
}

// ModelImpl: elements

ModelElement ModelImpl::findElement(const uuid& identity, FindElementBehavior behavior) {
  const ModelElement found(identities_.find(identity));
  if (found && behavior == FindElementBehavior::kLoaded) found->resolve();
  return found;
}

std::vector<ModelElement> ModelImpl::elements(const ClassInfo& info, bool withSubclasses) {
  std::vector<ModelElement> found;
  const auto take = [&](ElementImpl& element) {
    if (!element.isDestroyed()) found.emplace_back(&element);
  };
  pool_.forEachClass([&](const ClassInfo& candidate) {
    if (&candidate == &info || (withSubclasses && candidate.isA(info))) {
      pool_.forEach(candidate, take);
    }
  });
  return found;
}

std::vector<ModelElement> ModelImpl::roots() {
  std::vector<ModelElement> found;
  pool_.forEach([&](ElementImpl& element) {
    if (!element.isDestroyed() && Raw::owner(element) == kNoElement) found.emplace_back(&element);
  });
  return found;
}

ElementImpl* ModelImpl::newElement(const ClassInfo& info, const uuid& identity) {
  ElementImpl* element = pool_.create(info, identity);
  if (shared_) Raw::setShared(*element);
  try {
    identities_.add(*element);
  } catch (...) {
    pool_.release(element);
    throw;
  }
  ++liveElements_;
  return element;
}

ElementImpl* ModelImpl::createElement(const ClassInfo& info, const uuid& identity) {
  checkWritable();
  if (info.isAbstract) {
    reportException(mf0::messages::CannotCreateAbstractClass(info.qualifiedName));
  }
  if (!identity.isNil() && identities_.find(identity)) {
    reportException(mf0::messages::CannotCreateDuplicateIdentity(identity.toString()));
  }
  ElementImpl* element = newElement(info, identity.isNil() ? generateNewUuid() : identity);
  try {
    Raw::layout(*element).applyDefaults(*element);
    if (isRecording()) log_->noteCreated(element->id(), Chunk::of(element)->cellUnits, mark_);
  } catch (...) {
    identities_.remove(*element);
    elementsGone(1);
    pool_.release(element);
    throw;
  }
  return element;
}

void ModelImpl::uncreate(ElementImpl& element) noexcept {
  if (isRecording()) log_->dropCreated();
  undo::revert(*this, {.kind = UndoKind::kCreate, .element = element.id(), .count = 1});
}

// ModelImpl: transactions

Transaction ModelImpl::beginTransaction(bool outermost) {
  if (!isOpen()) reportException(mf0::messages::CannotUseClosedModel());
  if (outermost && depth_ > 0) reportException(mf0::messages::CannotNestTransaction());
  return Transaction(*this, enter());
}

std::uint32_t ModelImpl::enter() {
  openLog();
  open_.push_back({mark_, ++lastSerial_});
  mark_ = log_->records.size();
  setState(kRecording, true);
  return ++depth_;
}

void ModelImpl::leave(bool keep, std::optional<Value> result) {
  if (keep) {
    endInnermost();
  } else {
    // Ending an array may run foreign code, which must find the transaction ended.
    const vexal::ReleasePause pause;
    rollbackTo(mark_);
    endInnermost();
  }
  if (depth_ > 0) return;
  if (log_->empty()) return log_->clear();
  log_->result = std::move(result);
  log_->mayBeVoid = true;
  publish();
}

void ModelImpl::endInnermost() noexcept {
  mark_ = open_.back().outerMark;
  open_.pop_back();
  if (--depth_ == 0) setState(kRecording, false);
}

void ModelImpl::rollbackTo(std::size_t mark) noexcept {
  UndoRecords& records = log_->records;
  if (records.size() == mark) return;
  while (records.size() > mark) {
    const UndoRecord record = records.back();
    records.shrink(records.size() - 1);
    undo::revert(*this, record);
  }
  log_->shrunk();
}

ModelImpl::Scope::Scope(ModelImpl& model) : model_(model) { model_.enter(); }

ModelImpl::Scope::~Scope() {
  if (open_) model_.leave(false, std::nullopt);
}

void ModelImpl::Scope::done() {
  open_ = false;
  model_.leave(true, std::nullopt);
}

// ModelImpl: observers

Subscription ModelImpl::addObserver(Observer& observer) {
  auto entry = std::make_shared<Subscription::Entry>(Subscription::Entry{this, &observer, nullptr});
  observers_.push_back(entry);
  setState(kObserved, true);
  return Subscription(std::move(entry));
}

Subscription ModelImpl::observe(std::function<void(const ChangeSet&)> observer) {
  auto owned = std::make_unique<FunctionObserver>(std::move(observer));
  Subscription subscription = addObserver(*owned);
  observers_.back()->owned = std::move(owned);
  return subscription;
}

void ModelImpl::dropEndedObservers() {
  setState(kObserverEnded, told_ != nullptr);
  if (told_) return;  // somebody is being told; done afterwards
  const auto ended = std::stable_partition(observers_.begin(), observers_.end(),
                                           [](const auto& entry) { return entry->observer; });
  // They go last: one may hold a subscription of its own.
  const std::vector<std::shared_ptr<Subscription::Entry>> gone(
      std::make_move_iterator(ended), std::make_move_iterator(observers_.end()));
  observers_.erase(ended, observers_.end());
  setState(kObserved, !observers_.empty());
}

// The log of a change stays in its place while observers are told of it. Only a change that one of
// them makes meanwhile needs another log: that goes behind, and is told of when it is committed.

void ModelImpl::addLog() {
  UndoLog* const added = spare_ ? spare_ : new UndoLog(*this);
  if (spare_) spare_ = std::exchange(added->next, nullptr);
  log_ = log_->next = added;
}

void ModelImpl::recycle(UndoLog& log) noexcept {
  if (spare_ && spare_->next) {
    delete &log;
  } else {
    log.next = std::exchange(spare_, &log);
  }
}

void ModelImpl::settle(const UndoLog& log) noexcept {
  // Ending what the records kept alive may run foreign code, that of a host object's payload.
  const vexal::ReleasePause pause;
  if (isIdle()) references::tidyAfter(*this, log.records);
  for (const UndoRecord& record : log.records) undo::settle(*this, record);
}

inline void ModelImpl::finish(UndoLog& log) noexcept {
  if (!log.isOnePlainSet()) settle(log);
  log.clear();
  if (&log != log_) recycle(log);
}

inline void ModelImpl::tell(UndoLog& log, std::exception_ptr& first) {
  // By position: an observer may add observers or end them; ended ones stay until all are told.
  const std::size_t count = observers_.size();
  if (count == 0) return;
  const ChangeSet changes(log);
  const auto keepFirst = [&] {
    if (!first) first = std::current_exception();
  };
  if (log.mayBeVoid) {
    try {
      if (changes.empty()) return;
    } catch (...) {
      keepFirst();
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    try {
      if (Observer* const observer = observers_[i]->observer) observer->changed(changes);
    } catch (...) {
      keepFirst();
    }
  }
}

inline void ModelImpl::announce() {
  const Model keep(this);
  std::exception_ptr first;
  told_ = log_;
  do {
    UndoLog& log = *told_;
    if (log.round <= kMostRounds) {
      tell(log, first);
    } else if (!first) {
      first = doNotSettle();
    }
    told_ = log.next && log.next->isCommitted() ? log.next : nullptr;
    finish(log);
  } while (told_);
  if (state_ & kObserverEnded) dropEndedObservers();
  if (first) std::rethrow_exception(first);
}

void ModelImpl::publish() {
  log_->round = told_ ? told_->round + 1 : 1;
  if (!told_) announce();  // otherwise its turn comes
}

}  // namespace mf::zero
