#include "TesselSLB/BrokerRoundTrip.h"

#include <vector>

#include "TesselSLB/BrokerAddress.h"
#include "TesselSLB/BrokerInjection.h"
#include "TesselSLB/BrokerStartup.h"
#include "UTILITY/JbPipe.h"
#include "logging/Log.h"

namespace {

constexpr std::uint32_t kPipeTimeoutMilliseconds = 18000;
constexpr DWORD kFreshBrokerMilliseconds = 1000;

std::vector<SLUriScheme> SchemesToTry(std::wstring_view address) {
  std::vector<SLUriScheme> schemes = {SL_TAILORED_URI};
  if (const std::optional<SLUriScheme> own = GetUriScheme(address)) schemes.push_back(*own);
  return schemes;
}

bool EnsureBroker(DWORD scheme, std::wstring_view address) {
  if (BrokerPipeExists(scheme, address, 0 /*wait*/)) return true;
  if (!LaunchBroker(scheme, address)) return false;
  ::Sleep(kFreshBrokerMilliseconds);
  return true;
}

}  // namespace

std::wstring_view AddressOf(const SLElemData& record) {
  const wchar_t* address = record.sourceUri;
  return address != nullptr ? address : L"";
}

void BuildObjectRequest(Command command, const SLElemData& record, JArchive& request) {
  request = JArchive();
  request << static_cast<int>(command) << static_cast<int>(record.processId)
          << static_cast<const wchar_t*>(record.objectId);
}

void BuildWindowRequest(Command command, SLElemData& record, JArchive& request) {
  if (record.processId == 0) ::GetWindowThreadProcessId(record.hwnd, &record.processId);
  const bool hasId = ::SysStringLen(record.objectId) != 0;
  request = JArchive();
  request << static_cast<int>(command) << static_cast<int>(record.processId)
          << (hasId ? static_cast<const wchar_t*>(record.objectId) : L"");
}

int SendMessageToBroker(DWORD scheme, const JArchive& request, JArchive& answer,
                        std::wstring_view address) {
  LOG_INFO("SendMessageToBroker for %s scheme", SchemeName(scheme));
  if (!EnsureBroker(scheme, address)) {
    LOG_ERROR("Cannot start SLBroker process");
    return SL_BROKER_NOT_STARTED;
  }
  const std::wstring pipeName = GetBrokerPipeName(scheme, address);
  if (pipeName.empty()) {
    LOG_ERROR("Cannot get pipe name");
    return SL_FAILURE;
  }
  // One connection carries one request and one answer; it ends with this function.
  CJbPipe pipe;
  pipe.SetTimeout(kPipeTimeoutMilliseconds);
  pipe.SetPipeName(pipeName);
  pipe.SetAppendProcessId(false);
  if (!pipe.ConnectToServerPipe(0 /*process id*/)) {
    LOG_ERROR("Cannot connect to SL server pipe");
    return SL_CANNOT_CONNECT;
  }
  std::wstring buffer;
  if (!pipe.WriteString(request.toString(buffer))) {
    LOG_ERROR("Cannot write to SL server pipe");
    return SL_CANNOT_CONNECT;
  }
  PipeMessage message;
  std::wstring_view text;
  if (!pipe.ReadString(message, text)) {
    LOG_ERROR("Cannot read from SL server pipe");
    return SL_CANNOT_READ;
  }
  answer.fromString(text);
  int status = 0;
  answer >> status;
  return status;
}

int SendMessageToBrokerAnyScheme(HWND window, DWORD& scheme, const JArchive& request,
                                 JArchive& answer, std::wstring_view address) {
  int result = SL_NOT_SERVED;
  for (DWORD candidate : SchemesToTry(address)) {
    LOG_INFO("Prepare to send message for %s scheme", SchemeName(candidate));
    result = DispatchToBroker(candidate, request, answer, window, address);
    if (result == SL_SUCCESS) scheme = candidate;
    if (result != SL_NOT_SERVED) break;
  }
  return result;
}

int DispatchToBroker(DWORD& scheme, const JArchive& request, JArchive& answer, HWND window,
                     std::wstring_view address) {
  if (scheme != SL_NO_URI) return SendMessageToBroker(scheme, request, answer, address);

  LOG_INFO("SL_NO_URI scheme");
  const int result = SendMessageToBrokerAnyScheme(window, scheme, request, answer, address);
  if (result != SL_NOT_SERVED) return result;
  const int injection = InjectBroker(window);
  if (injection != SL_SUCCESS) {
    LOG_ERROR("SL injection failed with code %d", injection);
    return injection;
  }
  return SendMessageToBrokerAnyScheme(window, scheme, request, answer, address);
}
