// Part of tessel. Sets the user's log level for a while.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

class LevelSetting {
 public:
  // Sets the user's variable TESSEL_LOG_LEVEL in the registry. Throws InspectorError if it cannot.
  explicit LevelSetting(const std::string& level);

  // Puts the old value back, or removes the value if there was none. Leaves a value alone that
  // somebody else has written in the meantime.
  ~LevelSetting();
  LevelSetting(const LevelSetting&) = delete;
  LevelSetting& operator=(const LevelSetting&) = delete;

  // Whether the old value was a different one.
  bool HasChanged() const { return old_ != new_; }

 private:
  struct Value {
    DWORD type;
    std::vector<BYTE> data;
    bool operator==(const Value&) const = default;
  };
  static std::optional<Value> Read();
  static LSTATUS Write(const Value& value);

  const std::optional<Value> new_, old_;
};
