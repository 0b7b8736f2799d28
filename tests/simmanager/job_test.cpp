// Jobs and their runs: records that the host fills and reads.
#include "simmanager/mm/job.h"

#include <limits>

#include "package/package_test.h"
#include "support/framework_errors.h"

namespace kinetra::simmanager::mm {
namespace {

namespace messages = mf0::messages;
using kxsim::testing::ChangeLog;
using kxsim::testing::Lines;
using mf::zero::Model;
using mf::zero::ModelElement;
using mf::zero::Transaction;
using mf::zero::Value;
using mf::zero::testing::expectRaises;

class JobTest : public kxsim::testing::PackageTest {
 protected:
  Job job_ = Job::create(model());

  SimulationRun addRun(double id) {
    return job_->createIntoSimulationRuns(SimulationRun::Builder().setRunId(id));
  }
  std::vector<double> runIds() const {
    std::vector<double> ids;
    for (const SimulationRun& run : job_.simulationRuns()) ids.push_back(run.runId());
    return ids;
  }
};

TEST_F(JobTest, ItsNumbersAreDoublesAllTheWay) {
  job_->setStartTime(0.5);
  job_->setFinishTime(2.25);
  job_->setNumWorkers(4);
  EXPECT_EQ(Job::startTime(job_), 0.5);
  EXPECT_EQ(Job::finishTime(job_), 2.25);
  EXPECT_EQ(Job::numWorkers(job_), 4.0);
  EXPECT_EQ(job_->getPropertyValue(job_->getPropertyByIndex(3)), Value(4.0));
}

TEST_F(JobTest, EveryValueOfARunHasAPlaceOfItsOwn) {
  const SimulationRun run = addRun(7);
  run->setState(u"running");
  run->setStatusString(u"in step 3");
  run->setSimStatus(u"stepping");
  run->setProgress(0.25);
  run->setSimElapsedWallTime(12.5);
  run->setETA(37.5);
  run->setMachine(u"rechner-\u00FC\U0001F680");
  EXPECT_EQ(run.runId(), 7.0);
  EXPECT_EQ(run.state(), u"running");
  EXPECT_EQ(run.statusString(), u"in step 3");
  EXPECT_EQ(run.simStatus(), u"stepping");
  EXPECT_EQ(run.progress(), 0.25);
  EXPECT_EQ(run.simElapsedWallTime(), 12.5);
  EXPECT_EQ(run.eTA(), 37.5);
  EXPECT_EQ(run.machine(), u"rechner-\u00FC\U0001F680");
}

TEST_F(JobTest, ARunThatIsCreatedIntoItComesLastWithTheGivenIdentity) {
  EXPECT_FALSE(job_->hasSimulationRuns());
  addRun(1);
  EXPECT_TRUE(job_->hasSimulationRuns());
  const auto identity = mf::zero::generateNewUuid();
  const SimulationRun second = job_->createIntoSimulationRuns(
      SimulationRun::Builder().setRunId(2).setState(u"queued"), identity);
  EXPECT_EQ(second.Uuid(), identity);
  EXPECT_EQ(second.state(), u"queued");
  EXPECT_EQ(job_.simulationRuns().back(), second);
  EXPECT_EQ(runIds(), (std::vector<double>{1, 2}));
  EXPECT_EQ(second->getOwner(), job_);
  EXPECT_EQ(second->getOwningProperty().name(), u"SimulationRuns");
}

TEST_F(JobTest, ATakenIdentityIsRefusedAndTheJobStaysAsItWas) {
  const SimulationRun run = addRun(1);
  ChangeLog log(model());
  expectRaises<messages::CannotCreateDuplicateIdentity>(
      [&] { job_->createIntoSimulationRuns(SimulationRun::Builder(), run.Uuid()); });
  EXPECT_EQ(runIds(), std::vector<double>{1});
  EXPECT_EQ(model()->size(), 2U);
  EXPECT_EQ(log.commits(), 0);
}

TEST_F(JobTest, ABuilderCreatesTheRunsInTheOrderInWhichTheyWereAdded) {
  Job::Builder builder(model());
  builder.setNumWorkers(2).addSimulationRuns(SimulationRun::Builder().setRunId(9));
  builder.values().doClearSimulationRuns();
  for (const double id : {3.0, 1.0, 2.0}) {
    builder.addSimulationRuns(SimulationRun::Builder().setRunId(id).setMachine(u"one"));
  }
  EXPECT_EQ(builder.values().getNumWorkers(), 2.0);
  EXPECT_EQ(builder.values().getStartTime(), 0.0);
  ChangeLog log(model());
  job_ = builder.create();
  EXPECT_EQ(runIds(), (std::vector<double>{3, 1, 2}));
  EXPECT_EQ(job_.simulationRuns()[1].machine(), u"one");
  EXPECT_EQ(log.take(), (Lines{"+ Job", "+ SimulationRun", "+ SimulationRun", "+ SimulationRun"}));
  EXPECT_EQ(log.commits(), 1);
}

TEST_F(JobTest, ARunBuilderAnswersWhatItWasGiven) {
  SimulationRun::Builder builder;
  builder.setRunId(1).setState(u"a").setStatusString(u"b").setSimStatus(u"c").setProgress(2);
  builder.setSimElapsedWallTime(3).setETA(4).setMachine(u"d");
  const auto& values = builder.values();
  EXPECT_EQ(values.getRunId(), 1.0);
  EXPECT_EQ(values.getState(), u"a");
  EXPECT_EQ(values.getStatusString(), u"b");
  EXPECT_EQ(values.getSimStatus(), u"c");
  EXPECT_EQ(values.getProgress(), 2.0);
  EXPECT_EQ(values.getSimElapsedWallTime(), 3.0);
  EXPECT_EQ(values.getETA(), 4.0);
  EXPECT_EQ(values.getMachine(), u"d");
}

TEST_F(JobTest, DestroyingItDestroysItsRuns) {
  const SimulationRun run = addRun(1);
  addRun(2);
  job_->destroy();
  EXPECT_FALSE(run.isValid());
  EXPECT_EQ(model()->size(), 0U);
}

TEST_F(JobTest, DestroyingARunLeavesTheOthersInOrder) {
  addRun(1);
  const SimulationRun run = addRun(2);
  addRun(3);
  run->destroy();
  EXPECT_EQ(runIds(), (std::vector<double>{1, 3}));
}

TEST_F(JobTest, ARunThatIsGivenToAnotherJobLeavesTheFirst) {
  const SimulationRun run = addRun(1);
  addRun(2);
  const Job other = Job::create(model());
  other->getSimulationRunsMutable().add(run);
  EXPECT_EQ(runIds(), std::vector<double>{2});
  EXPECT_EQ(run->getOwner(), other);
}

TEST_F(JobTest, OnlyLivingRunsOfItsOwnModelAreTaken) {
  const SimulationRun held = addRun(1);
  const SimulationRun gone = SimulationRun::create(model());
  gone->destroy();
  auto runs = job_->getSimulationRunsMutable();
  ChangeLog log(model());
  const std::string text = expectRaises<messages::CannotAddIncompatibleTypes>(
      [&] { runs.ReferenceCollection::add(Job::create(Model::create())); });
  EXPECT_NE(text.find("kinetra.simmanager.mm.SimulationRun"), std::string::npos) << text;
  EXPECT_NE(text.find("kinetra.simmanager.mm.Job"), std::string::npos) << text;
  expectRaises<messages::CannotAddNonExistentObject>([&] { runs.add(gone); });
  expectRaises<messages::CannotAddNonExistentObject>([&] { runs.add(SimulationRun()); });
  expectRaises<messages::CannotCreateCrossModelAssociation>(
      [&] { runs.add(SimulationRun::create(Model::create())); });
  expectRaises<messages::CannotAddSecondObject>([&] { runs.add(held); });
  EXPECT_EQ(runIds(), std::vector<double>{1});
  EXPECT_EQ(log.commits(), 0);
}

TEST_F(JobTest, AChangeIsToldOnceWithOldAndNewValue) {
  const SimulationRun run = addRun(1);
  ChangeLog log(model());
  run->setProgress(0.5);
  run->setProgress(0.5);
  run->setState(u"done");
  run->setState(std::u16string(u"done"));
  EXPECT_EQ(log.take(),
            (Lines{"SimulationRun.Progress: 0 -> 0.5", "SimulationRun.State: \"\" -> \"done\""}));
  EXPECT_EQ(log.commits(), 2);
}

TEST_F(JobTest, NotANumberIsNeverEqualAndSoAlwaysAChange) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  job_->setStartTime(nan);
  ChangeLog log(model());
  job_->setStartTime(nan);
  EXPECT_EQ(log.commits(), 1);
  job_->setNumWorkers(-0.0);  // equal to 0
  EXPECT_EQ(log.commits(), 1);
}

TEST_F(JobTest, ATransactionKnowsTheValueBeforeItAndRollsBackToIt) {
  const SimulationRun run = addRun(1);
  run->setProgress(0.25);
  const auto progress = run->getPropertyByIndex(5);
  Transaction transaction = model()->beginTransaction();
  run->setProgress(0.5);
  run->setProgress(0.75);
  addRun(2);
  EXPECT_EQ(run->getOldValue(progress), Value(0.25));
  transaction.rollback();
  EXPECT_EQ(run.progress(), 0.25);
  EXPECT_EQ(runIds(), std::vector<double>{1});
}

}  // namespace
}  // namespace kinetra::simmanager::mm
