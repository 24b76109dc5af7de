#include "formats/StringMap.h"

#include <algorithm>
#include <cstdio>
#include <istream>
#include <ostream>
#include <stdexcept>

namespace gridmoor {

namespace {

// The prefix invariants are programming errors, not input errors, so they abort like an
// assertion; they stay active in release builds because a wrong prefix silently reads the
// wrong keys.
void checkPrefix(bool condition, const char* expression) {
  if (condition) return;
  std::fprintf(stderr, "StringMap: assertion failed: %s\n", expression);
  std::fflush(stderr);
  std::abort();
}

}  // namespace

StringMap::StringMap(const char* format) : numberFormat(format ? format : "%.16g") {}

void StringMap::setPrefix(const std::string& prefix) {
  _curPrefix = prefix;
  checkPrefix(_curPrefix.empty() || _curPrefix.back() == ':',
              "_curPrefix.empty() || _curPrefix.back() == ':'");
}

void StringMap::pushPrefix(const std::string& name) {
  if (name.empty()) throw std::runtime_error("StringMap::pushPrefix(): Empty prefix!");
  _curPrefix += name;
  _curPrefix += ':';
}

void StringMap::popPrefix() {
  if (_curPrefix.empty()) throw std::runtime_error("StringMap::popPrefix(): Empty prefix!");
  checkPrefix(_curPrefix.size() >= 2 && _curPrefix.back() == ':',
              "_curPrefix.size() >= 2 && _curPrefix.back() == ':'");
  // The colon of the previous component, searched from the second-last character.
  const std::size_t colon = _curPrefix.rfind(':', _curPrefix.size() - 2);
  if (colon == std::string::npos) _curPrefix.clear();
  else _curPrefix.erase(colon + 1);
}

std::int32_t StringMap::find(const std::string& key) const {
  const std::string full = _curPrefix + key;
  for (std::size_t i = 0; i < entries.size(); ++i)
    if (entries[i].first == full) return static_cast<std::int32_t>(i);
  return -1;
}

void StringMap::remove(const std::string& key) {
  const std::int32_t i = find(key);
  if (i >= 0) entries.erase(entries.begin() + i);
}

const char* StringMap::get(const std::string& key) const {
  const std::int32_t i = find(key);
  if (i >= 0) return entries[i].second.c_str();
  if (throwOnMissing) throw KeyNotFound(_curPrefix + key);
  return nullptr;
}

void StringMap::set(const std::string& key, const std::string& value) {
  const std::int32_t i = find(key);
  if (i >= 0) entries[i].second = value;
  else entries.emplace_back(_curPrefix + key, value);
}

std::string StringMap::format(double value) const {
  char buffer[512];
  const int n = std::snprintf(buffer, sizeof buffer, numberFormat.c_str(), value);
  if (n < 0) return std::string();
  if (static_cast<std::size_t>(n) < sizeof buffer) return std::string(buffer, n);
  std::string big(static_cast<std::size_t>(n) + 1, '\0');
  std::snprintf(big.data(), big.size(), numberFormat.c_str(), value);
  big.resize(n);
  return big;
}

void StringMap::clear() {
  entries.clear();
  _curPrefix.clear();
}

void StringMap::print() const {
  for (const auto& [key, value] : entries) std::printf("%s -> %s\n", key.c_str(), value.c_str());
}

void StringMap::write(std::ostream& out) const {
  const char separator = separators.empty() ? ' ' : separators.front();
  for (const auto& [key, value] : entries) out << key << separator << value << '\n';
}

void StringMap::read(std::istream& in, bool trim) {
  clear();
  std::string key;
  std::string value;
  bool inValue = false;
  auto endRecord = [&]() {
    if (trim) {
      const std::size_t first = value.find_first_not_of(" \t");
      if (first == std::string::npos) {
        value.clear();
      } else {
        const std::size_t last = value.find_last_not_of(" \t");
        value = value.substr(first, last - first + 1);
      }
    }
    if (!key.empty()) set(key, value);
    key.clear();
    value.clear();
    inValue = false;
  };
  int c;
  while ((c = in.get()) != std::char_traits<char>::eof()) {
    const char ch = static_cast<char>(c);
    if (ch == '\n') {
      endRecord();
    } else if (!inValue) {
      if (std::find(separators.begin(), separators.end(), ch) != separators.end()) inValue = true;
      else key += ch;
    } else if (ch != '\r') {
      value += ch;
    }
  }
  endRecord();
}

void StringMap::toText(std::string& result) const {
  result.clear();
  for (const auto& [key, value] : entries) {
    result += key;
    result += ' ';
    result += value;
    result += '\n';
  }
}

void StringMap::copyWithPrefix(const std::string& prefix, StringMap& target,
                               bool stripPrefix) const {
  for (const auto& [key, value] : entries) {
    if (key.compare(0, prefix.size(), prefix) != 0) continue;
    target.set(stripPrefix ? key.substr(prefix.size()) : key, value);
  }
}

}  // namespace gridmoor
