#include "tools/inspector/log/LevelSetting.h"

#include "logging/LevelSource.h"
#include "tessel/Text.h"
#include "tools/inspector/InspectorError.h"

namespace {

HKEY Root() { return logging::LevelPlaces().front().root; }
std::wstring Key() { return tessel::Wide(logging::LevelPlaces().front().key); }
std::wstring Name() { return tessel::Wide(logging::kLevelVariable); }

std::vector<BYTE> TextData(const std::string& text) {
  const std::wstring wide = tessel::Wide(text);
  const auto* const bytes = reinterpret_cast<const BYTE*>(wide.c_str());
  return {bytes, bytes + (wide.size() + 1) * sizeof(wchar_t)};
}

}  // namespace

LevelSetting::LevelSetting(const std::string& level)
    : new_(Value{REG_SZ, TextData(level)}), old_(Read()) {
  if (!HasChanged()) return;
  if (const LSTATUS error = Write(*new_); error != ERROR_SUCCESS) {
    throw InspectorError(
        ExitCode::kFailed,
        "cannot set the log level: error " + std::to_string(error) + " of the registry",
        "check that you may write the key HKEY_CURRENT_USER\\" + tessel::Narrow(Key()));
  }
}

LevelSetting::~LevelSetting() {
  if (!HasChanged() || Read() != new_) return;
  if (old_) {
    Write(*old_);
  } else {
    ::RegDeleteKeyValueW(Root(), Key().c_str(), Name().c_str());
  }
}

// Values are read and written as UTF-16, so that an old text of any kind comes back unchanged.
std::optional<LevelSetting::Value> LevelSetting::Read() {
  Value value = {};
  DWORD size = 0;
  const auto read = [&](void* data) {
    return ::RegGetValueW(Root(), Key().c_str(), Name().c_str(), RRF_RT_ANY | RRF_NOEXPAND,
                          &value.type, data, &size);
  };
  if (read(nullptr) != ERROR_SUCCESS) return std::nullopt;
  value.data.resize(size);
  if (read(value.data.data()) != ERROR_SUCCESS) return std::nullopt;
  value.data.resize(size);
  return value;
}

LSTATUS LevelSetting::Write(const Value& value) {
  return ::RegSetKeyValueW(Root(), Key().c_str(), Name().c_str(), value.type, value.data.data(),
                           static_cast<DWORD>(value.data.size()));
}
