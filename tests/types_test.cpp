#include <gmock/gmock.h>

#include <array>
#include <cstdlib>
#include <type_traits>

#include "TesselSilverlight.h"
#include "VectorGrowth.h"
#include "support/LogCapture.h"

namespace {

using testing::ElementsAre;

const LogCapture capture;

// A string manager as another compiler lays it out: its first field is a table of five functions.
struct Manager;
struct Header {
  Manager* manager;
  int length, capacity;
  long references;
};
struct Table {
  Header* (*allocate)(Manager*, int units, int unitSize);
  void (*free)(Manager*, Header*);
  Header* (*reallocate)(Manager*, Header*, int units, int unitSize);
  Header* (*nil)(Manager*);
  Manager* (*clone)(Manager*);
};
struct Manager {
  const Table* table;
};

struct Foreign : Manager {
  Foreign() : Manager{&kTable} {}
  static Foreign& Of(Manager* manager) { return static_cast<Foreign&>(*manager); }
  static Header* Allocate(Manager* self, int units, int unitSize) {
    if (Of(self).exhausted) return nullptr;
    ++Of(self).blocks;
    void* block = std::malloc(sizeof(Header) + static_cast<std::size_t>(units + 1) * unitSize);
    return new (block) Header{self, 0, units, 1};
  }
  static void Free(Manager* self, Header* header) {
    --Of(self).blocks;
    std::free(header);
  }
  static Header* Nil(Manager* self) {
    ++Of(self).nil.references;
    return &Of(self).nil;
  }
  static Manager* Clone(Manager* self) { return Of(self).copies; }
  static constexpr Table kTable = {&Allocate, &Free, nullptr, &Nil, &Clone};

  Header nil = {this, 0, 0, 1};
  wchar_t terminator = L'\0';  // of the empty text, right behind its header
  Manager* copies = this;
  int blocks = 0;
  bool exhausted = false;
};

wchar_t*& Raw(CStringW& text) { return reinterpret_cast<wchar_t*&>(text); }
Header& HeaderOf(CStringW& text) { return reinterpret_cast<Header*>(Raw(text))[-1]; }

struct ForeignText : CStringW {
  using CStringW::operator=;
  ForeignText(Foreign& manager, const wchar_t* text, long references = 1) {
    Header* header = Foreign::Allocate(&manager, static_cast<int>(wcslen(text)), sizeof(wchar_t));
    header->length = header->capacity;
    header->references = references;
    Raw(*this) = std::wcscpy(reinterpret_cast<wchar_t*>(header + 1), text);
  }
};

TEST(StringW, SharesOnlyUnlockedTextsOfItsOwnManager) {
  Foreign foreign, other;
  {
    ForeignText text(foreign, L"abc"), locked(foreign, L"locked", -1), target(foreign, L"old");
    CStringW copy(text), unlocked(locked), own(L"own");
    target = copy;
    EXPECT_TRUE(Raw(copy) == Raw(text) && Raw(target) == Raw(text));
    EXPECT_EQ(foreign.blocks, 3) << "the old text went back to its manager";
    own = text;
    EXPECT_EQ(HeaderOf(text).references, 3) << "another manager's text is copied";
    EXPECT_STREQ(own, L"abc");
    target = locked;
    for (CStringW* result : {&unlocked, static_cast<CStringW*>(&target)}) {
      EXPECT_NE(Raw(*result), Raw(locked));
      EXPECT_STREQ(*result, L"locked");
    }
    foreign.copies = &other;
    CStringW cloned(text);
    EXPECT_EQ(HeaderOf(cloned).manager, &other);
  }
  EXPECT_THAT((std::array{foreign.blocks, other.blocks}), ElementsAre(0, 0));
}

TEST(StringW, MovesEmptiesAndFailsWithoutALoss) {
  Foreign foreign;
  {
    ForeignText text(foreign, L"abc");
    CStringW moved(std::move(text)), target(L"old");
    EXPECT_EQ(&HeaderOf(text), &foreign.nil);
    target = std::move(moved);
    EXPECT_TRUE(moved.IsEmpty());
    foreign.exhausted = true;
    EXPECT_THROW(target = L"longer", ATL::CAtlException);
    foreign.exhausted = false;
    target = static_cast<const wchar_t*>(target);
    EXPECT_STREQ(target, L"abc");
    EXPECT_EQ(foreign.nil.references, 3) << "its own reference and two texts";
    target.Empty();
    EXPECT_EQ(foreign.blocks, 0);
  }
  EXPECT_EQ(foreign.nil.references, 1);
}

TEST(StringW, TakesANullPointerAsEmpty) {
  wchar_t* zeroed = nullptr;
  auto& text = reinterpret_cast<CStringW&>(zeroed);
  CStringW copy(text), target(L"old");
  target = text;
  EXPECT_TRUE(text.IsEmpty() && copy.IsEmpty() && target.IsEmpty());
  text.Empty();
  EXPECT_EQ(zeroed, nullptr) << "left as it was";
  text = L"new";
  EXPECT_STREQ(text, L"new");
  text = nullptr;
  EXPECT_STREQ(text, L"");
}

TEST(StringW, OffersItsManagerToOthers) {
  CStringW text(L"abc");
  EXPECT_THAT(HeaderOf(text), testing::FieldsAre(testing::NotNull(), 3, 3, 1));
  Manager* manager = HeaderOf(text).manager;
  const auto& [allocate, free, reallocate, nil, clone] = *manager->table;
  Header* header = allocate(manager, 2, 2);
  EXPECT_THAT(*header, testing::FieldsAre(manager, 0, 2, 1));
  EXPECT_EQ(reallocate(manager, header, INT_MAX, 2), nullptr) << "the old one stays";
  header = reallocate(manager, header, 5000, 2);
  EXPECT_EQ(header->capacity, 5000);
  free(manager, header);
  EXPECT_EQ(allocate(manager, -1, 2), nullptr);
  EXPECT_EQ(clone(manager), manager);
  const long references = nil(manager)->references;
  EXPECT_EQ(nil(manager)->references, references + 1);
}

TEST(ComBstr, OwnsItsText) {
  CComBSTR null, empty(L""), text;
  EXPECT_NE(empty.m_str, nullptr);
  text.Attach(::SysAllocStringLen(L"a\0b", 3));
  CComBSTR copy(text);
  EXPECT_NE(copy.m_str, text.m_str);
  copy = *std::addressof(copy);
  text.Attach(text.m_str);
  EXPECT_NE(CComBSTR(L"new").m_str, text.m_str) << "still allocated";
  EXPECT_EQ(std::wstring(copy, copy.Length()), std::wstring(L"a\0b", 3));
  const BSTR kept = text.m_str;
  CComBSTR moved(std::move(text));
  EXPECT_TRUE(moved.m_str == kept && !text);
  moved = std::move(empty);
  EXPECT_EQ(moved.Length(), 0u);
  copy = null;
  EXPECT_EQ(copy.m_str, nullptr);
}

TEST(HeapAllocator, UsesTheProcessHeapAndRefusesWhatWrapsAround) {
  LogCapture::Reset();
  HeapAllocator<long> allocator;
  for (std::size_t count : {SIZE_MAX / 4 + 2, SIZE_MAX / 4, SIZE_MAX}) {
    EXPECT_THROW((void)allocator.allocate(count), std::bad_alloc) << count;
  }
  using Records = std::vector<SLElemData, HeapAllocator<SLElemData>>;
  static_assert(sizeof(Records) == 24);
  EXPECT_THROW(Records(static_cast<std::size_t>(-1)), std::length_error);
  EXPECT_THROW(Records(SIZE_MAX / 200), std::bad_alloc);
  allocator.deallocate(nullptr, 0);
  alignas(16) static long noHeapBlock[32];
  allocator.deallocate(noHeapBlock + 16, 16);
  EXPECT_THAT(LogCapture::Messages("VERBOSE1"),
              ElementsAre("WARNING HeapAllocator: null pointer on deallocate",
                          "ERROR HeapAllocator: HeapFree failed err=87"));
}

TEST(VectorGrowth, GrowsByHalf) {
  std::vector<CComBSTR, HeapAllocator<CComBSTR>> items;
  std::vector<std::size_t> capacities;
  for (int i = 0; i < 10; ++i) {
    AppendGrowing(items, CComBSTR(L"text"));
    capacities.push_back(items.capacity());
  }
  EXPECT_THAT(capacities, ElementsAre(1, 2, 3, 4, 6, 6, 9, 9, 9, 13));
  EXPECT_EQ(::HeapSize(::GetProcessHeap(), 0, items.data()), 13 * sizeof(CComBSTR));
}

TEST(ElementRecord, StartsEmptyMovesAndIsNeverCopied) {
  static_assert(!std::is_copy_constructible_v<SLElemData> &&
                !std::is_copy_assignable_v<SLElemData> &&
                std::is_nothrow_move_constructible_v<SLElemData> &&
                std::is_nothrow_move_assignable_v<SLElemData>);
  const auto isEmpty = [](const SLElemData& record) {
    return record.processId == 0 && record.hwnd == nullptr && record.objectId == nullptr &&
           record.uriScheme == 0 && record.rect.right == 0 && record.sourceUri.IsEmpty();
  };
  LogCapture::Reset();
  {
    std::vector<SLElemData, HeapAllocator<SLElemData>> records(2);
    EXPECT_TRUE(isEmpty(records[1]));
    const BSTR id = records[1].objectId = ::SysAllocString(L"id");
    records[1].processId = 3;
    records[1].rect = {1, 2, 3, 4};
    records[1].sourceUri = L"http://a";
    records[0] = std::move(records[1]);
    EXPECT_EQ(LogCapture::Count("Invalid SL object"), 1u) << "the one that was replaced";
    EXPECT_TRUE(records[0].objectId == id && records[0].rect.bottom == 4);
    EXPECT_STREQ(records[0].sourceUri, L"http://a");
    EXPECT_TRUE(isEmpty(records[1]));
    alignas(SLElemData) unsigned char zeroed[sizeof(SLElemData)] = {};  // by a client
    reinterpret_cast<SLElemData&>(zeroed).~SLElemData();
  }
  EXPECT_EQ(LogCapture::Count("Invalid SL object"), 4u) << "one line a destroyed record";
}

}  // namespace
