// A load history stopped and started again, run by the gridmoor binary: the second run goes
// on from the last complete step of the first and ends with the results of a run that never
// stopped, also when the stop came inside the load cases of the effective matrices; an output
// lock left behind makes it do the cut step again.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "../formats/FieldFileTestSupport.h"

extern char** environ;

namespace gridmoor {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using gridmoor::testing::readFile;

constexpr int kSteps = 5;

std::string resultName(int oneBasedStep) { return "result_" + std::to_string(oneBasedStep) + ".txt"; }

class RestartRun : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "gridmoor-restartXXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    root_ = pattern;
  }
  void TearDown() override {
    if (!HasFailure()) fs::remove_all(root_);
    else std::cerr << "kept " << root_ << "\n";
  }

  // A copy of the folder restart_run; effective: three load cases of the effective matrices
  // after every step.
  fs::path prepare(const std::string& name, bool effective = false) {
    const fs::path dir = root_ / name;
    fs::copy(fs::path(GRIDMOOR_SOURCE_DIR) / "tests/driver/restart_run", dir);
    if (effective) {
      std::string parameters = readFile(dir / "run.xml");
      for (const auto& [from, to] : {std::pair<std::string, std::string>{
                                          "<WriteEffectiveMatrix>0", "<WriteEffectiveMatrix>1"},
                                      {"<ComputeLoadCaseList>1", "<ComputeLoadCaseList>1,2,3"},
                                      {"<EquivalencePrinciple>Energy",
                                       "<EquivalencePrinciple>EnergyAndStrain"}})
        parameters.replace(parameters.find(from), from.size(), to);
      std::ofstream(dir / "run.xml") << parameters;
    }
    return dir;
  }

  // The console of a run goes beside its folder, where no run of the test removes it.
  fs::path console(const fs::path& dir) const { return root_ / (dir.filename().string() + ".out"); }

  pid_t start(const fs::path& dir) {
    const std::string parameters = (dir / "run.xml").string();
    const std::string out = console(dir).string();
    const std::string err = (root_ / (dir.filename().string() + ".err")).string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::string program = GRIDMOOR_BINARY;
    char* argv[] = {program.data(), const_cast<char*>(parameters.c_str()), nullptr};
    pid_t pid = -1;
    const int failed = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    return failed == 0 ? pid : -1;
  }

  // The exit code; -1 for a run that did not exit by itself within the time limit or was
  // killed by a signal.
  static int finish(pid_t pid) {
    const auto limit = Clock::now() + std::chrono::seconds(120);
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
      if (Clock::now() > limit) {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        return -1;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  int run(const fs::path& dir) {
    const pid_t pid = start(dir);
    return pid < 0 ? -1 : finish(pid);
  }

  // The numbers of the console lines "label N" of a run: the one-based steps of "Timestep = "
  // or the load cases of "Loadcase = ".
  std::vector<int> numbered(const fs::path& dir, const std::string& label) const {
    std::vector<int> numbers;
    std::istringstream lines(readFile(console(dir)));
    for (std::string line; std::getline(lines, line);)
      if (line.rfind(label, 0) == 0) numbers.push_back(std::stoi(line.substr(label.size())));
    return numbers;
  }
  std::vector<int> stepsRun(const fs::path& dir) const { return numbered(dir, "Timestep = "); }

  // Starts a run in dir and stops it with SIGTERM once `file` exists there.
  void stopWhenExists(const fs::path& dir, const std::string& file) {
    const pid_t pid = start(dir);
    ASSERT_GT(pid, 0);
    const auto limit = Clock::now() + std::chrono::seconds(60);
    int status = 0;
    while (!fs::exists(dir / file) && Clock::now() < limit) {
      ASSERT_NE(waitpid(pid, &status, WNOHANG), pid) << "the run ended before " << file;
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    kill(pid, SIGTERM);
    ASSERT_EQ(finish(pid), 1) << "the run was not stopped by SIGTERM";
  }

  // The result files of every step hold the same words and the same numbers to the printed
  // precision (6 digits), with a floor for components that are zero up to rounding.
  static void expectSameResults(const fs::path& expected, const fs::path& actual) {
    for (int step = 1; step <= kSteps; ++step) {
      std::string a = readFile(expected / resultName(step)), b = readFile(actual / resultName(step));
      ASSERT_FALSE(a.empty()) << resultName(step);
      std::replace(a.begin(), a.end(), ',', ' ');
      std::replace(b.begin(), b.end(), ',', ' ');
      std::istringstream wordsA(a), wordsB(b);
      std::string wa, wb;
      while (wordsA >> wa) {
        ASSERT_TRUE(wordsB >> wb) << resultName(step) << " ends before " << wa;
        char *endA = nullptr, *endB = nullptr;
        const double va = std::strtod(wa.c_str(), &endA), vb = std::strtod(wb.c_str(), &endB);
        if (*endA != '\0' || *endB != '\0')
          EXPECT_EQ(wa, wb) << resultName(step);
        else
          EXPECT_NEAR(va, vb, 1e-5 * std::max(std::fabs(va), std::fabs(vb)) + 1e-10)
              << resultName(step);
      }
      EXPECT_FALSE(wordsB >> wb) << resultName(step) << " is longer";
    }
  }

  fs::path root_;
};

TEST_F(RestartRun, StoppedRunGoesOnFromItsLastCompleteStepToTheSameResults) {
  const fs::path whole = prepare("whole");
  ASSERT_EQ(run(whole), 0);
  ASSERT_EQ(stepsRun(whole), (std::vector<int>{1, 2, 3, 4, 5}));

  const fs::path cut = prepare("cut");
  // The result file of step 3 appears while that step writes its output: steps 1 and 2 are
  // complete on disk by then.
  stopWhenExists(cut, resultName(3));

  ASSERT_EQ(run(cut), 0) << readFile(root_ / "cut.err");
  const std::vector<int> steps = stepsRun(cut);
  ASSERT_FALSE(steps.empty());
  EXPECT_GE(steps.front(), 3) << "finished steps were done again";
  for (std::size_t k = 0; k < steps.size(); ++k) EXPECT_EQ(steps[k], steps.front() + int(k));
  EXPECT_EQ(steps.back(), kSteps);
  EXPECT_FALSE(fs::exists(cut / "outputLock"));
  // The number of matrix-vector products in the result files shows that each restarted step
  // began where the stopped run left off: a start from zero costs about ten more.
  expectSameResults(whole, cut);
}

TEST_F(RestartRun, StopInsideTheLoadCasesOfAStepGoesOnWithThatStepAndItsFinishedCases) {
  const fs::path whole = prepare("whole", true);
  ASSERT_EQ(run(whole), 0);

  const fs::path cut = prepare("cut", true);
  // The marker of the first case of step 3: the stop lands in that step's load cases.
  stopWhenExists(cut, "fields_3_XX.finished");
  ASSERT_TRUE(fs::exists(cut / "fields_3_XX.response"));

  ASSERT_EQ(run(cut), 0) << readFile(root_ / "cut.err");
  EXPECT_EQ(stepsRun(cut), (std::vector<int>{3, 4, 5}));
  // Step 3 goes on after the cases that it finished before the stop; the later steps run
  // all three.
  const std::vector<int> cases = numbered(cut, "Loadcase = ");
  ASSERT_FALSE(cases.empty());
  EXPECT_GT(cases.front(), 1);
  EXPECT_EQ(std::count(cases.begin(), cases.end(), 1), 2);
  expectSameResults(whole, cut);
  for (const fs::directory_entry& entry : fs::directory_iterator(cut))
    EXPECT_TRUE(entry.path().extension() != ".finished" && entry.path().extension() != ".response")
        << entry.path() << " was left behind";
}

TEST_F(RestartRun, LockLeftBehindRedoesTheLastStepAndAFinishedHistoryStartsAgain) {
  const fs::path whole = prepare("whole");
  ASSERT_EQ(run(whole), 0);
  // Two copies of a run that ended after step 3, one with the lock of a cut output.
  for (const char* name : {"plain", "locked"}) {
    fs::copy(whole, root_ / name, fs::copy_options::recursive);
    for (int step = 4; step <= kSteps; ++step)
      for (const std::string& file : {resultName(step), "fields_" + std::to_string(step) + ".vti",
                                      "state_" + std::to_string(step) + ".gmr"})
        ASSERT_TRUE(fs::remove(root_ / name / file)) << file;
  }
  std::ofstream(root_ / "locked" / "outputLock").close();

  ASSERT_EQ(run(root_ / "plain"), 0);
  EXPECT_EQ(stepsRun(root_ / "plain"), (std::vector<int>{4, 5}));
  expectSameResults(whole, root_ / "plain");

  ASSERT_EQ(run(root_ / "locked"), 0);
  EXPECT_EQ(stepsRun(root_ / "locked"), (std::vector<int>{3, 4, 5}));
  EXPECT_FALSE(fs::exists(root_ / "locked" / "outputLock"));
  expectSameResults(whole, root_ / "locked");

  // All steps complete: a new run of the whole history, whose result files replace the old
  // ones instead of being appended to them.
  ASSERT_EQ(run(whole), 0);
  EXPECT_EQ(stepsRun(whole), (std::vector<int>{1, 2, 3, 4, 5}));
  expectSameResults(root_ / "plain", whole);
}

}  // namespace
}  // namespace gridmoor
