#include "tools/inspector/doctor/FocusMessages.h"

#include "json/JsonReader.h"
#include "json/ListText.h"
#include "tessel/Text.h"
#include "wire/Commands.h"
#include "wire/Statuses.h"

namespace {

std::wstring Request(wire::Command command, DWORD process, const std::wstring& id) {
  base::ListText request;
  request.AppendInt(static_cast<int>(command));
  request.AppendInt(static_cast<int>(process));
  request.AppendString(id);
  return std::wstring(request.View());
}

struct Answer {
  int status;
  std::optional<base::ValueView> value;  // the value after the status
};

// Reads an answer as the module does, up to the first U+0000. The result points into `values`.
// Returns nothing if the answer does not begin with a status.
std::optional<Answer> ReadAnswer(std::wstring_view text, base::ListValue& values) {
  const auto type = base::ReadJson(text.substr(0, text.find(L'\0')), values);
  if (type != base::ValueType::kList || values.ByteSize() == 0) return std::nullopt;
  const base::ValueView first = values.At(0);
  const std::optional<int> status = first.GetIfInt();
  if (!status) return std::nullopt;
  if (first.ByteSize() == values.ByteSize()) return Answer{*status, std::nullopt};
  return Answer{*status, values.At(first.ByteSize())};
}

}  // namespace

std::wstring FocusRequest(DWORD process) {
  return Request(wire::Command::kFocusedElement, process, L"");
}

std::wstring ReleaseRequest(DWORD process, const std::wstring& id) {
  return Request(wire::Command::kRelease, process, id);
}

std::optional<FocusAnswer> ParseFocusAnswer(std::wstring_view text) {
  base::ListValue values;
  const std::optional<Answer> answer = ReadAnswer(text, values);
  if (!answer) return std::nullopt;
  if (answer->status != wire::kSuccess) return FocusAnswer{answer->status, {}};
  if (!answer->value) return std::nullopt;
  const auto id = answer->value->GetIfString();
  if (!id) return std::nullopt;
  return FocusAnswer{answer->status, tessel::Wide(base::ToUtf8(base::UpToZero(*id)))};
}

bool ConfirmsRelease(std::wstring_view text) {
  base::ListValue values;
  const std::optional<Answer> answer = ReadAnswer(text, values);
  return answer && answer->status == wire::kSuccess && answer->value &&
         answer->value->GetIfBool() == true;
}
