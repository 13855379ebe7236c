#include "controls/ItemsAccessible_win.h"

#include <gtest/gtest.h>

#include <new>

#include "support/Bstr_win.h"
#include "support/Variant_win.h"

namespace postmarker::test {
namespace {

// Items that can't be told of for want of memory.
class PoorItems final : public ItemsAccessible {
 public:
  using ItemsAccessible::ItemsAccessible;

 private:
  ~PoorItems() override = default;

  [[nodiscard]] ItemsKind Kind() const override {
    return {ROLE_SYSTEM_LIST, ROLE_SYSTEM_LISTITEM, 0};
  }
  [[nodiscard]] int CountItems() const override { throw std::bad_alloc(); }
  bool ReadItem(int /*item*/, ItemFacts* /*facts*/) const override { throw std::bad_alloc(); }
  void TakeItem(int /*item*/, LONG /*flags*/) override {}
  [[nodiscard]] std::optional<std::wstring> WindowName() const override { throw std::bad_alloc(); }
};

TEST(ItemsAccessibleTest, LetsNoExceptionPassIntoTheSystem) {
  const ComApartment apartment;
  const HWND window = ::CreateWindowExW(0, L"STATIC", L"items", WS_POPUP, 0, 0, 9, 9, nullptr,
                                        nullptr, nullptr, nullptr);
  const ComPtr<IAccessible> items = MakeWindowAccessible<PoorItems>(window);
  ASSERT_TRUE(items);
  const VARIANT self = NumberVariant(CHILDID_SELF);
  const VARIANT first = NumberVariant(1);
  LONG number = 0;
  Bstr text;
  VARIANT value = {};
  EXPECT_EQ(items->get_accChildCount(&number), E_OUTOFMEMORY);
  EXPECT_EQ(items->get_accName(self, text.Put()), E_OUTOFMEMORY);
  EXPECT_EQ(items->get_accName(first, text.Put()), E_OUTOFMEMORY);
  EXPECT_EQ(items->get_accValue(first, text.Put()), E_OUTOFMEMORY);
  EXPECT_EQ(items->get_accState(first, &value), E_OUTOFMEMORY);
  EXPECT_EQ(items->get_accFocus(&value), E_OUTOFMEMORY);
  EXPECT_EQ(items->get_accSelection(&value), E_OUTOFMEMORY);
  EXPECT_EQ(items->accSelect(SELFLAG_TAKEFOCUS, first), E_OUTOFMEMORY);
  EXPECT_EQ(items->accLocation(&number, &number, &number, &number, first), E_OUTOFMEMORY);
  EXPECT_EQ(items->accHitTest(0, 0, &value), E_OUTOFMEMORY);
  EXPECT_EQ(items->accDoDefaultAction(first), E_OUTOFMEMORY);
  ::DestroyWindow(window);
}

}  // namespace
}  // namespace postmarker::test
