// Helpers for element records, and a broker in a process of its own.
#pragma once

#include <gmock/gmock.h>

#include "TesselSilverlight.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "tessel/Text.h"

using Items = std::vector<CComBSTR, HeapAllocator<CComBSTR>>;
using Records = std::vector<SLElemData, HeapAllocator<SLElemData>>;
using Numbers = std::vector<long, HeapAllocator<long>>;

inline const std::wstring kProcess = std::to_wstring(::GetCurrentProcessId());
inline const std::string kOwnId = std::to_string(::GetCurrentProcessId());

inline std::wstring Address(const wchar_t* name) { return L"http://" + kProcess + name + L"/x"; }

inline std::string Narrow(const wchar_t* text) {
  return tessel::Narrow(text == nullptr ? L"(null)" : text);
}

// A broker in a process of its own. It prints each request, sends the next of the given answers,
// and ends after the last answer. Answers and printed requests have ' instead of ".
class ScriptedBroker : public ChildProcess {
 public:
  ScriptedBroker(SLUriScheme scheme, const std::wstring& address, const Texts& answers)
      : ChildProcess(TestFolder() + L"test_parts.exe broker " + std::to_wstring(scheme) + L' ' +
                     address + Quoted(answers)) {
    EXPECT_EQ(ReadLine(), "InitComm 0");
  }

 private:
  static std::wstring Quoted(const Texts& answers) {
    std::wstring all;
    for (const std::string& answer : answers) all += L" \"" + tessel::Wide(answer) + L'"';
    return all;
  }
};

// The answer to a search that finds 200 elements.
inline std::string TwoHundredElements() {
  std::string answer = "[0,200";
  for (int i = 0; i < 200; ++i) answer += ",'" + std::to_string(i) + "',0,0,0,0";
  return answer + ']';
}

inline SLElemData Element(const std::wstring& address, const wchar_t* id,
                          DWORD scheme = SL_TAILORED_URI) {
  SLElemData element;
  element.processId = 77;
  element.hwnd = ::GetDesktopWindow();
  element.objectId = ::SysAllocString(id);
  element.uriScheme = scheme;
  element.sourceUri = address.c_str();
  return element;
}

// Clears the id, so that the record's destructor sends no release.
inline void Forget(SLElemData& element) {
  ::SysFreeString(std::exchange(element.objectId, nullptr));
}

// Returns "process scheme address id" of a record that a call has filled, and clears the id.
inline std::string Taken(SLElemData& element) {
  const std::string text = std::to_string(element.processId) + ' ' +
                           std::to_string(element.uriScheme) + ' ' + Narrow(element.sourceUri) +
                           ' ' + Narrow(element.objectId);
  Forget(element);
  return text;
}

// Returns the log's error lines without "Invalid SL object", which the destructor of an empty
// record logs.
inline Texts Errors() {
  Texts lines = LogCapture::Messages();
  std::erase(lines, "ERROR Invalid SL object");
  return lines;
}

inline const std::string kFailed = "ERROR SendMessageToBroker failed with ";
inline const std::string kKept = "77 0 old kept";  // what Taken returns for an unchanged record

// Asks for the element at the point 3,-4. Returns the code and the fields of the record found.
inline std::string Point(SLElemData& element) {
  SLElemData found = Element(L"old", L"kept", SL_NO_URI);
  found.rect = {1, 2, 3, 4};
  const int code = TesselSilverlight::GetElemFromPoint(element, {3, -4}, 5, found);
  EXPECT_EQ(found.rect.bottom, 4);
  return std::to_string(code) + ' ' + Taken(found);
}

inline std::string SidesOf(const RECT& rect) {
  std::string text;
  for (LONG side : {rect.left, rect.top, rect.right, rect.bottom}) {
    text += ' ' + std::to_string(side);
  }
  return text;
}

// Reads the rectangle. Returns the code and the rectangle, which is 9 9 9 9 if the call did not set
// it.
inline std::string RectangleOf(SLElemData& element) {
  RECT rect = {9, 9, 9, 9};
  const int code = TesselSilverlight::GetElemRectangle(element, rect);
  return std::to_string(code) + SidesOf(rect);
}
