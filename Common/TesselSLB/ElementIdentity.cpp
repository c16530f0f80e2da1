// Runs in the client. The exports that return the identity, the selector and the ancestors of an
// element, and the export that finds all elements that match search texts.
#include "TesselSLB/ElementCall.h"
#include "logging/Log.h"

namespace TesselSilverlight {

namespace {

using Records = std::vector<SLElemData, HeapAllocator<SLElemData>>;

// Reads the number of records and then each record. Releases the old records before it reads the
// first new record. If the answer ends early, the records that were not read stay empty.
template <class ReadRecord>
void ReadRecords(JArchive& answer, Records& records, ReadRecord readRecord) {
  std::int32_t count = 0;
  answer >> count;
  records = Records(static_cast<std::size_t>(count));
  for (SLElemData& record : records) readRecord(record);
}

void ReadObjects(JArchive& answer, const SLElemData& source, Records& records) {
  ReadRecords(answer, records, [&](SLElemData& record) {
    CComBSTR objectId;
    answer >> objectId;
    NameElement(record, source, objectId);
  });
}

bool CheckParent(const SLElemData& parent, const SLElemData& object) {
  if (!IsValid(parent)) {
    LOG_ERROR("Invalid pParentObj");
    return false;
  }
  if (parent.processId != object.processId || parent.uriScheme != object.uriScheme) {
    LOG_ERROR("Objects not in the same context");
    return false;
  }
  return true;
}

const wchar_t* TextOrEmpty(const wchar_t* text) { return text != nullptr ? text : L""; }

}  // namespace

int GetIdInfo(const SLElemData* parentObj, const SLElemData& obj, wchar_t** text1, wchar_t** text2,
              wchar_t** text3, int* number) {
  if (!CheckObject(obj)) return SL_INVALID_OBJECT;
  if (parentObj != nullptr && !CheckParent(*parentObj, obj)) return SL_INVALID_OBJECT;
  return CallObject(
      wire::Command::kIdentity, obj,
      [&](JArchive& request) {
        request << (parentObj != nullptr ? static_cast<const wchar_t*>(parentObj->objectId) : L"")
                << static_cast<std::int32_t>(number != nullptr);
      },
      [&](JArchive& answer) {
        CComBSTR first, second, third;
        std::int32_t position = 0;
        answer >> first >> second >> third >> position;
        *text1 = first.Detach();
        *text2 = second.Detach();
        *text3 = third.Detach();
        if (number != nullptr) *number = position;
      });
}

int GetDefaultSelectorHierarchy(const SLElemData& elem, Records& chain) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  return CallObject(wire::Command::kSelector, elem, NoArguments,
                    [&](JArchive& answer) { ReadObjects(answer, elem, chain); });
}

int GetAncestryInfo(const SLElemData& elem, Records& ancestors,
                    std::vector<long, HeapAllocator<long>>& numbers) {
  if (!CheckObject(elem)) return SL_INVALID_OBJECT;
  return CallObject(
      wire::Command::kAncestry, elem, NoArguments,
      [&](JArchive& answer) {
        ReadObjects(answer, elem, ancestors);
        answer >> numbers;
      },
      "GetAncestryInfo: ");
}

int FindCollection(SLElemData& root, wchar_t* const search1, wchar_t* const search2,
                   wchar_t* const search3, int option1, bool option2, Records& found) {
  // A root with a window may lack an object. Such a root means the whole content of the window.
  if (root.hwnd == nullptr && !CheckObject(root)) return SL_INVALID_OBJECT;
  return CallWindow(
      wire::Command::kCollection, root,
      [&](JArchive& request) {
        for (const wchar_t* search : {search1, search2, search3}) request << TextOrEmpty(search);
        request << option1 << option2;
      },
      [&](JArchive& answer) {
        ReadRecords(answer, found, [&](SLElemData& record) {
          CComBSTR objectId;
          RECT rect = {};
          answer >> objectId;
          ReadRectangle(answer, rect);
          NameElement(record, root, objectId);
          record.rect = rect;
        });
      });
}

}  // namespace TesselSilverlight
