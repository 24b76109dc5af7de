// A small ordered key/value store with a key prefix stack, typed getters and
// line-oriented text input and output (parameter echoes, restart tables, headers).
#pragma once

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace gridmoor {

class StringMap {
 public:
  // Thrown by lookups of absent keys while throwOnMissing is set.
  class KeyNotFound : public std::exception {
   public:
    explicit KeyNotFound(const std::string& key) : message_("Key " + key + " not found!") {}
    const char* what() const noexcept override { return message_.c_str(); }
    const std::string& message() const { return message_; }

   private:
    std::string message_;
  };

  // A null format selects "%.16g", enough digits for a double to read back exactly.
  explicit StringMap(const char* numberFormat = nullptr);

  // The prefix is empty or a chain of "name:" components; it is put in front of every key
  // given to find, get, set and remove.
  void setPrefix(const std::string& prefix);
  void pushPrefix(const std::string& name);
  void popPrefix();
  const std::string& prefix() const { return _curPrefix; }

  // Index of prefix + key in insertion order, or -1.
  std::int32_t find(const std::string& key) const;
  bool contains(const std::string& key) const { return find(key) != -1; }
  void remove(const std::string& key);

  // The value text, or a null pointer for an absent key (unless throwOnMissing is set).
  // The pointer stays valid until the store is changed.
  const char* get(const std::string& key) const;

  // Typed getters for double, int, bool, unsigned int, unsigned long long and 64-bit signed.
  // Without a default an absent key gives 0 (or throws while throwOnMissing is set); with a
  // default the default is returned and nothing is thrown; the status form sets status to -1
  // for an absent key and 0 for a present one.
  template <class T>
    requires std::is_arithmetic_v<T>
  T get(const std::string& key) const {
    const char* text = get(key);
    return text ? convert<T>(text) : T(0);
  }
  template <class T>
    requires std::is_arithmetic_v<T>
  T get(const std::string& key, T defaultValue) const {
    const std::int32_t i = find(key);
    return i < 0 ? defaultValue : convert<T>(entries[i].second.c_str());
  }
  template <class T>
    requires std::is_arithmetic_v<T>
  T get(const std::string& key, T defaultValue, int& status) const {
    const std::int32_t i = find(key);
    status = i < 0 ? -1 : 0;
    return i < 0 ? defaultValue : convert<T>(entries[i].second.c_str());
  }

  // Sets an existing key's value or appends prefix + key. Doubles go through numberFormat,
  // unsigned 64-bit values through "%llu", booleans as 1 or 0.
  void set(const std::string& key, const std::string& value);
  void set(const std::string& key, const char* value) { set(key, std::string(value)); }
  template <class T>
    requires std::is_arithmetic_v<T>
  void set(const std::string& key, T value) {
    set(key, format(value));
  }

  void clear();
  void addSeparator(char c) { separators.push_back(c); }
  void setThrowOnMissing(bool on) { throwOnMissing = on; }
  bool getThrowOnMissing() const { return throwOnMissing; }

  std::size_t size() const { return entries.size(); }
  const std::vector<std::pair<std::string, std::string>>& getEntries() const { return entries; }

  // "key -> value" lines on standard output.
  void print() const;
  // "key<separator>value" lines, the separator being the first of the list.
  void write(std::ostream& out) const;
  // Replaces the contents by the records of the stream; with trim, blanks and tabs are
  // removed from both ends of each value.
  void read(std::istream& in, bool trim);
  // "key value" lines, each ended by a line feed.
  void toText(std::string& result) const;
  // Copies the entries whose full key starts with prefix into target (through target.set, so
  // target's own prefix applies); with stripPrefix, prefix is cut from the copied key.
  void copyWithPrefix(const std::string& prefix, StringMap& target, bool stripPrefix) const;

 private:
  template <class T>
  static T convert(const char* text) {
    if constexpr (std::is_same_v<T, bool>) {
      return std::atoi(text) != 0;
    } else if constexpr (std::is_floating_point_v<T>) {
      return static_cast<T>(std::atof(text));
    } else if constexpr (std::is_signed_v<T> && sizeof(T) <= sizeof(int)) {
      return static_cast<T>(std::atoi(text));
    } else if constexpr (std::is_signed_v<T>) {
      return static_cast<T>(std::atoll(text));
    } else if constexpr (sizeof(T) <= sizeof(unsigned long)) {
      return static_cast<T>(std::strtoul(text, nullptr, 0));
    } else {
      return static_cast<T>(std::strtoull(text, nullptr, 0));
    }
  }
  std::string format(double value) const;
  static std::string format(bool value) { return value ? "1" : "0"; }
  template <class T>
    requires std::is_integral_v<T>
  static std::string format(T value) {
    if constexpr (std::is_signed_v<T>) return std::to_string(static_cast<long long>(value));
    else return std::to_string(static_cast<unsigned long long>(value));
  }

  std::vector<std::pair<std::string, std::string>> entries;
  std::string numberFormat;
  std::vector<char> separators{' ', '\t', '\r'};
  bool throwOnMissing = false;
  std::string _curPrefix;
};

}  // namespace gridmoor
