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
  const SimulationRun run = SimulationRun::create(model());
  run->setETA(1.5);
  EXPECT_EQ(run.eTA(), 1.5);
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

}  // namespace
}  // namespace kinetra::simmanager::mm
