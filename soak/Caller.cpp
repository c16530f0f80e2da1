#include "Caller.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

#include "wire/Statuses.h"

namespace soak {

namespace {

using namespace TesselSilverlight;

constexpr int kUnknownId = wire::kUnknownElement;
constexpr int kNotSupported = wire::kNotSupported;

// The text after the name describes the values of the answer: see Layout in Nonsense.h.
constexpr Operation kElemFromPoint = {"GetElemFromPoint", "s"};
constexpr Operation kFocusedElement = {"GetFocusedElement", "s", true /*searches*/};
constexpr Operation kParentElement = {"GetParentElement", "s"};
constexpr Operation kReleaseObj = {"ReleaseObj", "b"};
constexpr Operation kElementValue = {"GetElementValue", ""};
constexpr Operation kElemRectangle = {"GetElemRectangle", "iiii"};
constexpr Operation kAttribute = {"GetAttribute", "s"};
constexpr Operation kItems = {"GetItems", "*s"};
constexpr Operation kIdInfo = {"GetIdInfo", "sssi"};
constexpr Operation kHierarchy = {"GetDefaultSelectorHierarchy", "#s"};
constexpr Operation kAncestryInfo = {"GetAncestryInfo", "#s*i"};
constexpr Operation kCollection = {"FindCollection", "#siiii"};
constexpr Operation kClickElem = {"ClickElem", ""};
constexpr Operation kSetValue = {"SetValue", ""};
constexpr Operation kSetFocus = {"SetFocus", ""};
constexpr Operation kCheckElem = {"CheckElem", ""};
constexpr Operation kSelectItem = {"SelectItem", ""};

std::wstring IdOf(const SLElemData& element) {
  return {element.objectId, ::SysStringLen(element.objectId)};
}

// Clears the id, because the record's destructor sends a release to the broker if the id is set.
void Forget(SLElemData& record) { ::SysFreeString(std::exchange(record.objectId, nullptr)); }

HWND WindowOf(const Life& life) { return reinterpret_cast<HWND>(ULONG_PTR{life.window}); }

}  // namespace

void Caller::Step(bool calm) {
  ChooseElement();
  SLElemData element;
  const bool isHandedOut = !calm && element_ != kUnknown && IsHandedOut(element);
  if (!isHandedOut) {
    // Fill `element` without a call, so that the next call is about an element that the broker has
    // not handed out.
    Forget(element);
    element = Content();
    element.objectId = ::SysAllocString(ElementId(broker_, element_).c_str());
  }
  switch (Random(calm ? 2 : 4)) {
    case 0:
      Read(element);
      break;
    case 1:
      Act(element);
      break;
    case 2:
      Navigate(element);
      break;
    default:
      if (isHandedOut || element_ == kUnknown) {
        Succeeds(kReleaseObj, element_ == kUnknown ? SL_FAILURE : SL_SUCCESS,
                 [&] { return ReleaseObj(element); });
        Forget(element);
      }
  }
  if (!isHandedOut) Forget(element);
}

void Caller::ChooseElement() {
  broker_ = Random(kBrokers);
  element_ = Random(kElements + 1) - 1;
  static_assert(kUnknown == -1);
  const Life now = state_.brokers[broker_].life;
  Life& known = lives_[broker_];
  if (now.process != known.process) formerLives_[broker_] = std::exchange(known, now);
  // On average, one of 20 calls of this function uses the process id and the window of the broker's
  // previous process, if there was one.
  const Life& former = formerLives_[broker_];
  life_ = former.process != 0 && Random(20) == 0 ? former : known;
}

SLElemData Caller::Content() const {
  SLElemData content;
  content.processId = life_.process;
  content.hwnd = WindowOf(life_);
  content.uriScheme = SL_TAILORED_URI;
  content.sourceUri = SceneAddress(broker_, run_).c_str();
  return content;
}

bool Caller::IsHandedOut(SLElemData& element) {
  SLElemData content = Content();
  const POINT point = PointOf(element_);
  if (!Succeeds(kElemFromPoint, SL_SUCCESS,
                [&] { return GetElemFromPoint(content, point, 0, element); }))
    return false;
  Expect(IdOf(element) == ElementId(broker_, element_), kElemFromPoint);
  return true;
}

template <class Function>
bool Caller::Succeeds(const Operation& operation, int status, Function function) {
  const Timeline& timeline = state_.brokers[broker_].timeline;
  const long began = timeline.Now();
  int code = 0;
  try {
    code = function();
  } catch (const std::bad_alloc&) {
    code = kBadAlloc;
  } catch (const std::length_error&) {
    code = kLengthError;
  }
  return Judge(state_, timeline, {operation, status, life_.process}, began, timeline.Now(), code);
}

void Caller::Expect(bool right, const Operation& operation) {
  if (!right) ReportWrong(state_, operation);
}

int Caller::StatusOf(int known) const { return element_ == kUnknown ? kUnknownId : known; }

int Caller::StatusOfStates() const {
  return StatusOf(element_ == kPage ? kNotSupported : SL_SUCCESS);
}

void Caller::Read(SLElemData& element) {
  switch (Random(5)) {
    case 0: {
      RECT rect = {};
      const RECT expected = ElementRect(element_);
      if (Succeeds(kElemRectangle, StatusOf(SL_SUCCESS),
                   [&] { return GetElemRectangle(element, rect); }))
        Expect(::EqualRect(&rect, &expected), kElemRectangle);
      break;
    }
    case 1: {
      wchar_t name[] = L"name", other[] = L"no such", *value = nullptr;
      const bool isThere = Random(4) != 0;
      if (Succeeds(kAttribute, StatusOf(isThere ? SL_SUCCESS : kNotSupported),
                   [&] { return GetAttribute(element, isThere ? name : other, &value); }))
        Expect(value == ElementName(broker_, element_), kAttribute);
      ::SysFreeString(value);
      break;
    }
    case 2: {
      std::vector<CComBSTR, HeapAllocator<CComBSTR>> items;
      if (Succeeds(kItems, StatusOfStates(), [&] { return GetItems(element, 1, items); }))
        Expect(items.size() == 2 && items[1].m_str == SecondItem(broker_, element_), kItems);
      break;
    }
    case 3: {
      wchar_t* texts[3] = {};
      int number = -1;
      if (Succeeds(kIdInfo, StatusOf(SL_SUCCESS), [&] {
            return GetIdInfo(nullptr, element, &texts[0], &texts[1], &texts[2], &number);
          }))
        Expect(texts[0] == ElementName(broker_, element_) && texts[1] == std::wstring(L"Box") &&
                   texts[2] == ElementId(broker_, element_) && number == 0,
               kIdInfo);
      for (wchar_t* text : texts) ::SysFreeString(text);
      break;
    }
    default:
      CComBSTR value;
      Expect(GetElementValue(element, value) == E_NOTIMPL, kElementValue);
  }
}

void Caller::Act(SLElemData& element) {
  switch (Random(5)) {
    case 0:
      Succeeds(kClickElem, StatusOf(SL_SUCCESS), [&] { return ClickElem(element, 0, 0); });
      break;
    case 1:
      Succeeds(kSetValue, StatusOfStates(), [&] { return SetValue(element, L"Größe"); });
      break;
    case 2:
      Succeeds(kSetFocus, StatusOf(SL_SUCCESS), [&] { return SetFocus(element); });
      break;
    case 3:
      Succeeds(kCheckElem, StatusOfStates(), [&] { return CheckElem(element, Random(2)); });
      break;
    default:
      const bool isThere = Random(4) != 0;
      const CComBSTR item(isThere ? SecondItem(broker_, element_).c_str() : L"no such");
      Succeeds(kSelectItem, isThere ? StatusOfStates() : StatusOf(kNotSupported),
               [&] { return SelectItem(element, item); });
  }
}

void Caller::Navigate(SLElemData& element) {
  switch (Random(6)) {
    case 0: {
      SLElemData parent;
      if (Succeeds(kParentElement, StatusOf(SL_SUCCESS),
                   [&] { return GetParentElement(element, parent); }))
        Expect(IdOf(parent) == (element_ == kPage ? L"" : ElementId(broker_, kPage)),
               kParentElement);
      break;
    }
    case 1: {
      Records ancestors;
      std::vector<long, HeapAllocator<long>> numbers;
      if (!Succeeds(kAncestryInfo, StatusOf(SL_SUCCESS),
                    [&] { return GetAncestryInfo(element, ancestors, numbers); }))
        break;
      Expect(element_ == kPage
                 ? ancestors.empty() && numbers.empty()
                 : AreElements(ancestors, {kPage}) && numbers.size() == 1 && numbers[0] == 0,
             kAncestryInfo);
      break;
    }
    case 2: {
      Records chain;
      if (Succeeds(kHierarchy, StatusOf(SL_SUCCESS),
                   [&] { return GetDefaultSelectorHierarchy(element, chain); }))
        Expect(
            element_ == kPage ? AreElements(chain, {kPage}) : AreElements(chain, {kPage, element_}),
            kHierarchy);
      break;
    }
    case 3: {
      SLElemData focused;
      focused.sourceUri = element.sourceUri;
      if (Succeeds(kFocusedElement, SL_SUCCESS,
                   [&] { return GetFocusedElement(WindowOf(life_), focused); }))
        Expect(IdOf(focused).empty() || IdOf(focused).starts_with(Letter(broker_) + L"-"),
               kFocusedElement);
      break;
    }
    case 4:
      Collect(element, StatusOf(SL_SUCCESS));
      break;
    default:
      SLElemData content = Content();
      Collect(content, SL_SUCCESS);
  }
}

void Caller::Collect(SLElemData& root, int status) {
  Records found;
  if (!Succeeds(kCollection, status,
                [&] { return FindCollection(root, nullptr, nullptr, nullptr, 0, true, found); }))
    return;
  if (::SysStringLen(root.objectId) == 0) {
    Expect(AreElements(found, {0, 1, 2, 3, 4, 5}), kCollection);
  } else if (element_ == kPage) {
    Expect(AreElements(found, {1, 2, 3, 4, 5}), kCollection);
  } else {
    Expect(found.empty(), kCollection);
  }
}

bool Caller::AreElements(const Records& records, std::initializer_list<int> elements) const {
  return std::ranges::equal(records, elements, [&](const SLElemData& record, int element) {
    return IdOf(record) == ElementId(broker_, element);
  });
}

}  // namespace soak
