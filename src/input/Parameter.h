// One typed setting of the parameter store: its key text, its default text and its value,
// registered in its owner's list so that reading and printing are loops over that list.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "input/SolverEnums.h"
#include "input/XmlNode.h"

namespace gridmoor {

using DoubleList = std::vector<double>;
using IntList = std::vector<int>;
using WordList = std::vector<std::string>;
using Table = std::vector<std::vector<double>>;  // rows of doubles

// The print-out block a setting belongs to.
enum class ParameterBlock { Mesh, Solution, Postprocessing, Elasticity, Lattora };

// Marks a setting without a default: its absence is reported when it is read.
inline constexpr std::nullopt_t required = std::nullopt;

// Text of one setting from the tree. Absent node: the default, or, for a required key, the
// empty text and a "Problem reading the parameter" line on the error stream. A node with
// element children takes the text of its last "values" or "value" child (empty when none);
// otherwise its own first text.
std::string readParameterText(const XmlNode& tree, const std::string& key,
                              const std::optional<std::string>& defaultText);

// Parsing of a text by the value type. Numbers go through atoi/atof, so bad numbers read 0.
void parseValue(const std::string& text, bool& value);
void parseValue(const std::string& text, int& value);
void parseValue(const std::string& text, double& value);
void parseValue(const std::string& text, std::string& value);
void parseValue(const std::string& text, DoubleList& value);
void parseValue(const std::string& text, IntList& value);
void parseValue(const std::string& text, WordList& value);
void parseValue(const std::string& text, Table& value);
template <typename Enum>
  requires requires(Enum e) { wordOf(e); }
void parseValue(const std::string& text, Enum& value) {
  parseWord(text, value);  // an unknown word keeps the previous value
}

// The print-out form: bools as 1/0, lists comma-separated, table rows joined by ";".
std::string formatValue(bool value);
std::string formatValue(int value);
std::string formatValue(double value);
std::string formatValue(const std::string& value);
std::string formatValue(const DoubleList& value);
std::string formatValue(const IntList& value);
std::string formatValue(const WordList& value);
std::string formatValue(const Table& value);
template <typename Enum>
  requires requires(Enum e) { wordOf(e); }
std::string formatValue(Enum value) {
  return wordOf(value);
}

// Splits at any of the separators and drops empty tokens.
std::vector<std::string> splitTokens(const std::string& text, const std::string& separators);

class ParameterBase;
using ParameterList = std::vector<ParameterBase*>;

class ParameterBase {
 public:
  // The key text; a schema may change it before the reading.
  std::string key;

  ParameterBase(const ParameterBase&) = delete;
  ParameterBase& operator=(const ParameterBase&) = delete;
  virtual ~ParameterBase() = default;

  ParameterBlock block() const { return block_; }
  bool isRequired() const { return !defaultText_.has_value(); }
  const std::optional<std::string>& defaultText() const { return defaultText_; }
  // The text that the last read gave (the default when the key was absent).
  const std::string& text() const { return text_; }

  // Read the text from the tree and parse it into the value.
  void read(const XmlNode& tree) {
    text_ = readParameterText(tree, key, defaultText_);
    parse(text_);
  }
  virtual void parse(const std::string& text) = 0;
  virtual std::string format() const = 0;

 protected:
  ParameterBase(ParameterList& owner, ParameterBlock block, std::string keyText,
                std::optional<std::string> defaultText)
      : key(std::move(keyText)), block_(block), defaultText_(std::move(defaultText)) {
    owner.push_back(this);
  }

 private:
  ParameterBlock block_;
  std::optional<std::string> defaultText_;
  std::string text_;
};

template <typename T>
class Parameter final : public ParameterBase {
 public:
  // The value starts as the parsed default, so that an unknown enumeration word read later
  // leaves the default in place; a required setting starts value-initialised.
  Parameter(ParameterList& owner, ParameterBlock block, std::string keyText,
            std::optional<std::string> defaultText)
      : ParameterBase(owner, block, std::move(keyText), std::move(defaultText)) {
    if (!isRequired()) parseValue(*this->defaultText(), value_);
  }

  const T& operator()() const { return value_; }
  void set(T value) { value_ = std::move(value); }

  void parse(const std::string& text) override { parseValue(text, value_); }
  std::string format() const override { return formatValue(value_); }

 private:
  T value_{};
};

}  // namespace gridmoor
