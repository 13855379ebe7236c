// What is made of answers of MAPI that no store should give. MAPI is one within the test, which
// answers with exactly what is set.
#include <gmock/gmock.h>
#include <mapicode.h>
#include <mapidefs.h>
#include <mapitags.h>

#include <array>
#include <cstring>

#include "clients/outlook/MapiItem_win.h"
#include "clients/outlook/MapiStoreWalker_win.h"
#include "support/FakeDispatch_win.h"

// The interfaces' members are written by the header's own lists, which name parameters.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr ULONG kContactTag = PROP_TAG(PT_UNSPECIFIED, 0x8105);
constexpr ULONG kContactText = PROP_TAG(PT_STRING8, 0x8105);

#define REFUSE                \
  override {                  \
    return MAPI_E_NO_SUPPORT; \
  }
class TableMembers : public IMAPITable {
 public:
  MAPI_IMAPITABLE_METHODS(REFUSE)
};
class StoreMembers : public IMsgStore {
 public:
  MAPI_IMAPIPROP_METHODS(REFUSE)
  MAPI_IMSGSTORE_METHODS(REFUSE)
};
class SessionMembers : public IMAPISession {
 public:
  MAPI_IMAPISESSION_METHODS(REFUSE)
};
class MessageMembers : public IMessage {
 public:
  MAPI_IMAPIPROP_METHODS(REFUSE)
  MAPI_IMESSAGE_METHODS(REFUSE)
};
#undef REFUSE

// Lives in the test, is whatever it is asked for, and counts its references.
template <class Members>
class Fake : public Members {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    AddRef();
    *out = this;
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
  ULONG STDMETHODCALLTYPE Release() override { return --m_references; }
  [[nodiscard]] ULONG References() const { return m_references; }

 private:
  ULONG m_references = 1;
};

SPropValue TextValue(ULONG tag, const char* text) {
  SPropValue value = {};
  value.ulPropTag = tag;
  value.Value.lpszA = const_cast<char*>(text);
  return value;
}

// Rows of one column, or of a store's two.
struct Rows {
  struct Set {
    ULONG count = 0;
    SRow rows[8] = {};
  } set;
  SRowSet* Get() { return reinterpret_cast<SRowSet*>(&set); }
  void Add(ULONG count, SPropValue* values) { set.rows[set.count++] = {0, count, values}; }
};

class FakeTable final : public Fake<TableMembers> {
 public:
  HRESULT STDMETHODCALLTYPE SetColumns(SPropTagArray*, ULONG) noexcept override { return S_OK; }
  HRESULT STDMETHODCALLTYPE QueryRows(LONG, ULONG, SRowSet** out) noexcept override {
    ++questions;
    *out = questions == 1 || isEndless ? rows : nullptr;
    return S_OK;
  }

  SRowSet* rows = nullptr;
  bool isEndless = false;
  int questions = 0;
};

class FakeMessage final : public Fake<MessageMembers> {
 public:
  HRESULT STDMETHODCALLTYPE GetRecipientTable(ULONG, IMAPITable** out) noexcept override {
    table.AddRef();
    *out = &table;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG, MAPINAMEID**, ULONG,
                                            SPropTagArray** out) noexcept override {
    *out = reinterpret_cast<SPropTagArray*>(&tags);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetProps(SPropTagArray* wanted, ULONG, ULONG* count,
                                     SPropValue** out) noexcept override {
    asked.push_back(wanted->aulPropTag[0]);
    *count = valueCount;
    *out = &value;
    return S_OK;
  }

  FakeTable table;
  struct {
    ULONG count = 1;
    ULONG tag[2] = {kContactTag, kContactTag};
  } tags;
  ULONG valueCount = 1;
  SPropValue value = TextValue(kContactText, "carl@x.example");
  std::vector<ULONG> asked;
};

class FakeSession final : public Fake<SessionMembers> {
 public:
  HRESULT STDMETHODCALLTYPE GetMsgStoresTable(ULONG, IMAPITable** out) noexcept override {
    table.AddRef();
    *out = &table;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OpenMsgStore(ULONG_PTR, ULONG, ENTRYID*, LPCIID, ULONG,
                                         IMsgStore** out) noexcept override {
    store.AddRef();
    *out = &store;
    return S_OK;
  }

  FakeTable table;
  Fake<StoreMembers> store;
};

class MapiAnswersTest : public testing::Test {
 protected:
  MapiAnswersTest() {
    s_now = this;
    m_library.initialize = &Initialize;
    m_library.uninitialize = &Uninitialize;
    m_library.logonEx = &LogonEx;
    m_library.freeBuffer = &FreeBuffer;
    m_library.hexFromBin = &HexFromBin;
    m_library.hrQueryAllRows = &QueryAllRows;
    m_library.freeProws = &FreeRows;
    m_library.hrGetOneProp = &GetOneProp;
    EXPECT_EQ(m_mail.Attach(&m_object), S_OK);
    m_message.table.rows = m_rows.Get();
  }
  ~MapiAnswersTest() override {
    EXPECT_EQ(m_message.References(), 1U);
    EXPECT_EQ(m_message.table.References(), 1U);
    EXPECT_EQ(m_session.References(), 1U);
    EXPECT_EQ(m_session.table.References(), 1U);
    EXPECT_EQ(m_session.store.References(), 1U);
  }

  AddressSet Recipients(const StopQuery& stop = {}) {
    AddressSet addresses;
    EXPECT_EQ(MapiItemReader(m_library).AddRecipients(m_mail, stop, &addresses), S_OK);
    return addresses;
  }
  std::wstring ContactAddress() { return MapiItemReader(m_library).ContactAddress(m_mail); }

  // The ids of the stores that the walk stands at, with "*" after a default store.
  std::vector<std::string> Stores() {
    std::vector<std::string> ids;
    MapiStoreWalker walker(m_library);
    while (walker.Next()) {
      ids.push_back(walker.StoreIdHex() + (walker.IsDefault() ? "*" : ""));
    }
    return ids;
  }

  FakeMessage m_message;
  FakeSession m_session;
  Rows m_rows;
  SPropValue m_oneProp = {};
  int m_freedBuffers = 0;

  MapiLibrary m_library;
  FakeDispatch m_object{[this](DISPID, DISPPARAMS*, VARIANT* result) {
    result->vt = VT_UNKNOWN;
    result->punkVal = &m_message;
    m_message.AddRef();
    return S_OK;
  }};
  OutlookItem m_mail;

 private:
  static HRESULT WINAPI Initialize(void*) { return S_OK; }
  static void WINAPI Uninitialize() {}
  static HRESULT WINAPI LogonEx(ULONG_PTR, LPTSTR, LPTSTR, ULONG, IMAPISession** session) {
    s_now->m_session.AddRef();
    *session = &s_now->m_session;
    return S_OK;
  }
  static ULONG WINAPI FreeBuffer(void*) {
    ++s_now->m_freedBuffers;
    return 0;
  }
  // In UTF-16, as a library does that was built for it.
  static void WINAPI HexFromBin(BYTE* bytes, int count, char* text) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::wstring digits;
    for (int i = 0; i < count; ++i) {
      digits += static_cast<wchar_t>(kDigits[bytes[i] >> 4]);
      digits += static_cast<wchar_t>(kDigits[bytes[i] & 15]);
    }
    std::memcpy(text, digits.c_str(), (digits.size() + 1) * sizeof(wchar_t));
  }
  static HRESULT WINAPI QueryAllRows(IMAPITable*, SPropTagArray*, SRestriction*, SSortOrderSet*,
                                     LONG, SRowSet** rows) {
    *rows = s_now->m_rows.Get();
    return S_OK;
  }
  static void WINAPI FreeRows(SRowSet*) {}
  static HRESULT WINAPI GetOneProp(IMAPIProp*, ULONG, SPropValue** value) {
    *value = &s_now->m_oneProp;
    return S_OK;
  }

  static inline MapiAnswersTest* s_now = nullptr;
};

TEST_F(MapiAnswersTest, RowsWithoutAnAddressAreSkipped) {
  SPropValue error = TextValue(CHANGE_PROP_TYPE(PR_EMAIL_ADDRESS_A, PT_ERROR), "a@x.example");
  SPropValue noText = TextValue(PR_EMAIL_ADDRESS_A, nullptr);
  SPropValue good = TextValue(PR_EMAIL_ADDRESS_A, "Ann@x.example");
  m_rows.Add(0, &good);
  m_rows.Add(1, nullptr);
  m_rows.Add(1, &error);
  m_rows.Add(1, &noText);
  EXPECT_THAT(Recipients(), IsEmpty());
  m_message.table.questions = 0;
  m_rows.Add(1, &good);
  EXPECT_THAT(Recipients(), ElementsAre(L"ann@x.example"));
}

TEST_F(MapiAnswersTest, TableThatNeverEndsIsLeft) {
  SPropValue good = TextValue(PR_EMAIL_ADDRESS_A, "ann@x.example");
  m_rows.Add(1, &good);
  m_message.table.isEndless = true;
  // The stop is for a reader that would go on; it is more patient than the reader.
  EXPECT_THAT(Recipients([this] { return m_message.table.questions > 5000; }),
              ElementsAre(L"ann@x.example"));
  EXPECT_EQ(m_message.table.questions, 1000);
}

TEST_F(MapiAnswersTest, StopEndsATableBetweenItsBatches) {
  m_rows.Add(0, nullptr);
  m_message.table.isEndless = true;
  (void)Recipients([this] { return m_message.table.questions == 3; });
  EXPECT_EQ(m_message.table.questions, 3);
}

TEST_F(MapiAnswersTest, ContactIsAskedForItsPropertyAsText) {
  EXPECT_EQ(ContactAddress(), L"carl@x.example");
  EXPECT_THAT(m_message.asked, ElementsAre(kContactText));
  EXPECT_EQ(m_freedBuffers, 2) << "the names' numbers and the value";
}

TEST_F(MapiAnswersTest, ContactIsNotAskedWithoutANumberForTheName) {
  for (const ULONG count : {0U, 2U}) {
    m_message.tags.count = count;
    EXPECT_EQ(ContactAddress(), L"");
  }
  m_message.tags = {1, {PROP_TAG(PT_ERROR, 0x8105), 0}};
  EXPECT_EQ(ContactAddress(), L"");
  EXPECT_THAT(m_message.asked, IsEmpty());
}

TEST_F(MapiAnswersTest, ContactsAddressIsExactlyOneTextOfItsProperty) {
  for (const ULONG count : {0U, 2U}) {
    m_message.valueCount = count;
    EXPECT_EQ(ContactAddress(), L"");
  }
  m_message.valueCount = 1;
  for (const SPropValue& value :
       {TextValue(CHANGE_PROP_TYPE(kContactText, PT_ERROR), "x@y.z"),
        TextValue(PR_EMAIL_ADDRESS_A, "x@y.z"), TextValue(kContactText, nullptr)}) {
    m_message.value = value;
    EXPECT_EQ(ContactAddress(), L"");
  }
}

TEST_F(MapiAnswersTest, StoresWithoutAnIdAreSkipped) {
  std::array<BYTE, 2> bytes = {0xA1, 0x0B};
  const auto idOf = [&bytes](ULONG tag) {
    SPropValue value = {};
    value.ulPropTag = tag;
    value.Value.bin = {2, bytes.data()};
    return value;
  };
  SPropValue yes = {};
  yes.ulPropTag = PR_DEFAULT_STORE;
  yes.Value.b = 1;
  SPropValue unknown = yes;
  unknown.ulPropTag = CHANGE_PROP_TYPE(PR_DEFAULT_STORE, PT_ERROR);
  const SPropValue id = idOf(PR_ENTRYID);
  std::array<SPropValue, 2> noId = {idOf(CHANGE_PROP_TYPE(PR_ENTRYID, PT_ERROR)), yes};
  std::array<SPropValue, 2> isDefault = {id, yes};
  std::array<SPropValue, 2> isNot = {id, unknown};
  m_rows.Add(2, nullptr);
  m_rows.Add(1, isDefault.data());
  m_rows.Add(2, noId.data());
  m_rows.Add(2, isDefault.data());
  m_rows.Add(2, isNot.data());
  EXPECT_THAT(Stores(), ElementsAre("A10B*", "A10B"));
}

TEST_F(MapiAnswersTest, SpecialFolderIsAPropertyOfTheTypeThatWasAskedFor) {
  std::array<BYTE, 1> bytes = {0xC3};
  SPropValue id = {};
  id.ulPropTag = PR_ENTRYID;
  id.Value.bin = {1, bytes.data()};
  SPropValue no = {};
  std::array<SPropValue, 2> row = {id, no};
  m_rows.Add(2, row.data());
  MapiStoreWalker walker(m_library);
  ASSERT_TRUE(walker.Next());
  m_oneProp = id;
  m_oneProp.ulPropTag = PR_IPM_SUBTREE_ENTRYID;
  EXPECT_EQ(walker.SpecialFolderIdHex(PR_IPM_SUBTREE_ENTRYID), "C3");
  m_oneProp.ulPropTag = CHANGE_PROP_TYPE(PR_IPM_SUBTREE_ENTRYID, PT_ERROR);
  EXPECT_EQ(walker.SpecialFolderIdHex(PR_IPM_SUBTREE_ENTRYID), "");
}

TEST_F(MapiAnswersTest, MemoryIsGivenBackBeforeMoreIsTaken) {
  SPropValue first = {};
  MapiBuffer<SPropValue> buffer(m_library);
  *buffer.Put() = &first;
  EXPECT_EQ(m_freedBuffers, 0);
  *buffer.Put() = &first;
  EXPECT_EQ(m_freedBuffers, 1);
}

}  // namespace
}  // namespace postmarker::test
