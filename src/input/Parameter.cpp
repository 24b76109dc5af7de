#include "input/Parameter.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace gridmoor {

namespace {

const char* const kListSeparators = " ,;\n";

bool isBlank(const std::string& token) {
  return token.find_first_not_of(" \t\r\n") == std::string::npos;
}

template <typename List>
std::string joinWithCommas(const List& values) {
  std::string out;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) out += ',';
    out += formatValue(values[i]);
  }
  return out;
}

}  // namespace

std::string readParameterText(const XmlNode& tree, const std::string& key,
                              const std::optional<std::string>& defaultText) {
  const XmlNode node = tree ? tree.getChildByPath(key, false, '/') : XmlNode();
  if (!node) {
    if (defaultText) return *defaultText;
    // Reported and read as empty: the reading goes on so that one run lists every missing key.
    std::fputs(("Problem reading the parameter " + key + "\n").c_str(), stderr);
    return std::string();
  }
  if (node.childCount() > 0) {
    // Only "values"/"value" children count, the last one holding text wins; a node with other
    // children reads as empty, not as its default.
    std::string result;
    for (int i = 0; i < node.childCount(); ++i) {
      const XmlNode child = node.child(i);
      const std::string name = child.name();
      if ((name == "values" || name == "value") && child.textCount() > 0) result = child.text(0);
    }
    return result;
  }
  return node.textCount() > 0 ? node.text(0) : std::string();
}

std::vector<std::string> splitTokens(const std::string& text, const std::string& separators) {
  std::vector<std::string> tokens;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = text.find_first_of(separators, start);
    const std::size_t stop = end == std::string::npos ? text.size() : end;
    if (stop > start) tokens.push_back(text.substr(start, stop - start));
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return tokens;
}

void parseValue(const std::string& text, bool& value) {
  value = text == "true" || text == "True" || std::atoi(text.c_str()) == 1;
}

void parseValue(const std::string& text, int& value) { value = std::atoi(text.c_str()); }

void parseValue(const std::string& text, double& value) { value = std::atof(text.c_str()); }

void parseValue(const std::string& text, std::string& value) { value = text; }

void parseValue(const std::string& text, DoubleList& value) {
  value.clear();
  for (const std::string& token : splitTokens(text, kListSeparators)) {
    if (!isBlank(token)) value.push_back(std::atof(token.c_str()));
  }
}

void parseValue(const std::string& text, IntList& value) {
  value.clear();
  for (const std::string& token : splitTokens(text, kListSeparators)) {
    if (!isBlank(token)) value.push_back(std::atoi(token.c_str()));
  }
}

void parseValue(const std::string& text, WordList& value) {
  value.clear();
  for (const std::string& token : splitTokens(text, kListSeparators)) {
    // Tabs and carriage returns are not separators, but a word made only of them is no word.
    if (!isBlank(token)) value.push_back(token);
  }
}

void parseValue(const std::string& text, Table& value) {
  // Rows with nothing but white space (a trailing ";", a final line end) are dropped, and so
  // are blank values, so that a layout over several lines reads as written.
  value.clear();
  for (const std::string& row : splitTokens(text, ";")) {
    std::vector<double> numbers;
    for (const std::string& token : splitTokens(row, ",")) {
      if (!isBlank(token)) numbers.push_back(std::atof(token.c_str()));
    }
    if (!numbers.empty()) value.push_back(std::move(numbers));
  }
}

std::string formatValue(bool value) { return value ? "1" : "0"; }

std::string formatValue(int value) { return std::to_string(value); }

std::string formatValue(double value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

std::string formatValue(const std::string& value) { return value; }

std::string formatValue(const DoubleList& value) { return joinWithCommas(value); }

std::string formatValue(const IntList& value) { return joinWithCommas(value); }

std::string formatValue(const WordList& value) { return joinWithCommas(value); }

std::string formatValue(const Table& value) {
  std::string out;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (i > 0) out += ';';
    out += joinWithCommas(value[i]);
  }
  return out;
}

}  // namespace gridmoor
