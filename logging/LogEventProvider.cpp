#include "logging/LogEventProvider.h"

#include <initializer_list>

#include "logging/LogLevel.h"

namespace logging {
namespace {

// {204DE76A-126E-4673-B349-5A5D11D180D7}
constexpr GUID kProvider = {
    0x204DE76A, 0x126E, 0x4673, {0xB3, 0x49, 0x5A, 0x5D, 0x11, 0xD1, 0x80, 0xD7}};
// {7FE69228-633E-4F06-80C1-527FEA23E3A7}
constexpr GUID kEventClass = {
    0x7FE69228, 0x633E, 0x4F06, {0x80, 0xC1, 0x52, 0x7F, 0xEA, 0x23, 0xE3, 0xA7}};

constexpr UCHAR kMessageOnlyEvent = 10;
constexpr UCHAR kFullEvent = 12;
constexpr ULONG kMessageOnlyFlag = 0x2;
constexpr std::size_t kMostFields = 5;

struct MofEvent {
  EVENT_TRACE_HEADER header;
  MOF_FIELD fields[kMostFields];
};

MOF_FIELD Field(const void* data, std::size_t length) {
  MOF_FIELD field = {};
  field.DataPtr = reinterpret_cast<ULONG64>(data);
  field.Length = static_cast<ULONG>(length);
  return field;
}

MOF_FIELD TextField(std::string_view zeroTerminated) {
  return Field(zeroTerminated.data(), zeroTerminated.size() + 1);
}

MofEvent MakeEvent(UCHAR type, UCHAR level, std::initializer_list<MOF_FIELD> fields) {
  MofEvent event = {};
  std::size_t count = 0;
  for (const MOF_FIELD& field : fields) event.fields[count++] = field;
  event.header.Size = static_cast<USHORT>(sizeof(EVENT_TRACE_HEADER) + count * sizeof(MOF_FIELD));
  event.header.Flags = WNODE_FLAG_TRACED_GUID | WNODE_FLAG_USE_MOF_PTR;
  event.header.Guid = kEventClass;
  event.header.Class.Type = type;
  event.header.Class.Level = level;
  return event;
}

std::atomic<const LogEventProvider*> currentProvider{nullptr};

// Makes its provider available through GetEventProvider while this object exists. The only object
// is a static variable in EnsureEventProvider, which is destroyed when the module is unloaded.
struct ProviderLifetime {
  ProviderLifetime() {
    provider.Register();
    currentProvider = &provider;
  }
  ~ProviderLifetime() { currentProvider = nullptr; }

  LogEventProvider provider;
};

}  // namespace

LogEventProvider::LogEventProvider() : EtwTraceProvider(kProvider, kEventClass) {}

void LogEventProvider::WriteLine(const LogLine& line) const {
  const auto eventLevel = static_cast<UCHAR>(4 - line.level);
  if (!IsEnabledFor(eventLevel)) return;

  const MOF_FIELD message = TextField(line.text.substr(line.messageStart));
  if ((EnableFlags() & kMessageOnlyFlag) != 0) {
    MofEvent event = MakeEvent(kMessageOnlyEvent, eventLevel, {message});
    Write(&event.header);
    return;
  }
  const DWORD stackDepth = 0;
  const char* file = line.file != nullptr ? line.file : "";
  MofEvent event =
      MakeEvent(kFullEvent, eventLevel,
                {Field(&stackDepth, sizeof(stackDepth)), Field(nullptr, 0) /*stack addresses*/,
                 Field(&line.line, sizeof(line.line)), TextField(file), message});
  Write(&event.header);
}

void LogEventProvider::OnEventsEnabled(UCHAR sessionLevel) {
  // A trace session that changes its level calls this function again. Keep the level that the first
  // call saved, because OnEventsDisabled restores this level when the session ends.
  if (!savedTraceLevel_) savedTraceLevel_ = GetTraceLevel();
  SetTraceLevel(sessionLevel < 2 ? kFatal : 4 - sessionLevel);
}

void LogEventProvider::OnEventsDisabled() {
  if (savedTraceLevel_) SetTraceLevel(*savedTraceLevel_);
  savedTraceLevel_.reset();
}

void EnsureEventProvider() { static ProviderLifetime lifetime; }

const LogEventProvider* GetEventProvider() { return currentProvider.load(); }

}  // namespace logging
