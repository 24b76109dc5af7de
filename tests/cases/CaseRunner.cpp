// Runs every folder of tests/cases as one invocation of the gridmoor binary in a temporary
// directory and checks its exit code, console streams and files against the folder's case.txt.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::vector<std::string> caseNames() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(GRIDMOOR_CASES_DIR))
    if (entry.is_directory() && fs::exists(entry.path() / "case.txt"))
      names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::string readAll(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

std::string shellQuote(const std::string& s) {
  std::string out = "'";
  for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

class EndToEnd : public ::testing::TestWithParam<std::string> {};

TEST_P(EndToEnd, Case) {
  const fs::path source = fs::path(GRIDMOOR_CASES_DIR) / GetParam();
  const fs::path work = fs::temp_directory_path() /
                        ("gridmoor-case-" + GetParam() + "-" + std::to_string(::getpid()));
  fs::remove_all(work);
  fs::create_directories(work / "run");
  fs::copy(source, work / "run", fs::copy_options::recursive);

  std::ifstream expectations(source / "case.txt");
  std::vector<std::string> lines;
  std::string arguments;
  for (std::string line; std::getline(expectations, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line.rfind("args", 0) == 0) {
      std::istringstream words(line.substr(4));
      for (std::string w; words >> w;) {
        arguments += ' ';
        arguments += shellQuote(w);
      }
    } else {
      lines.push_back(line);
    }
  }

  const std::string command = "cd " + shellQuote((work / "run").string()) + " && " +
                              shellQuote(GRIDMOOR_BINARY) + arguments + " >" +
                              shellQuote((work / "console.out").string()) + " 2>" +
                              shellQuote((work / "console.err").string()) + " </dev/null";
  const int status = std::system(command.c_str());
  ASSERT_TRUE(WIFEXITED(status)) << "the run did not exit normally";
  const int exitCode = WEXITSTATUS(status);
  const std::string out = readAll(work / "console.out");
  const std::string err = readAll(work / "console.err");

  for (const std::string& line : lines) {
    std::istringstream words(line);
    std::string what;
    words >> what;
    std::string rest;
    std::getline(words, rest);
    if (!rest.empty() && rest[0] == ' ') rest.erase(0, 1);
    auto check = [&](const std::string& text, const std::string& name, const std::string& expr) {
      const size_t space = expr.find(' ');
      const std::string verb = expr.substr(0, space);
      const std::string needle = space == std::string::npos ? "" : expr.substr(space + 1);
      if (verb == "contains")
        EXPECT_NE(text.find(needle), std::string::npos) << name << " lacks: " << needle << "\n--- " << name << ":\n" << text;
      else if (verb == "lacks")
        EXPECT_EQ(text.find(needle), std::string::npos) << name << " contains: " << needle << "\n--- " << name << ":\n" << text;
      else
        ADD_FAILURE() << "unknown expectation: " << line;
    };
    if (what == "exit") {
      EXPECT_EQ(exitCode, std::stoi(rest)) << "stderr:\n" << err;
    } else if (what == "stdout") {
      check(out, "stdout", rest);
    } else if (what == "stderr") {
      check(err, "stderr", rest);
    } else if (what == "file") {
      const size_t space = rest.find(' ');
      const fs::path file = work / "run" / rest.substr(0, space);
      const std::string expr = space == std::string::npos ? "" : rest.substr(space + 1);
      if (expr == "exists")
        EXPECT_TRUE(fs::exists(file)) << file;
      else if (expr == "absent")
        EXPECT_FALSE(fs::exists(file)) << file;
      else {
        ASSERT_TRUE(fs::exists(file)) << file;
        check(readAll(file), file.string(), expr);
      }
    } else {
      ADD_FAILURE() << "unknown expectation: " << line;
    }
  }
  if (HasFailure())
    std::cerr << "kept the case directory " << work << "\n";
  else
    fs::remove_all(work);
}

INSTANTIATE_TEST_SUITE_P(Cases, EndToEnd, ::testing::ValuesIn(caseNames()),
                         [](const auto& info) { return info.param; });

}  // namespace
