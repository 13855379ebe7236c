// What a screen reader is told of a label.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <oleacc.h>

#include "controls/LabelFixture_win.h"
#include "support/Bstr_win.h"
#include "support/Variant_win.h"
#include "support/WinEvents_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LabelAccessibilityTest : public LabelFixture {
 protected:
  LabelAccessibilityTest() {
    Show(
        L"<B>Read</B> <A HREF=\"http://one\">the <I>first</I></A><BR>or <A "
        L"HREF=http://two>two</A>");
    ::AccessibleObjectFromWindow(m_label.Handle(), static_cast<DWORD>(OBJID_CLIENT),
                                 __uuidof(IAccessible), m_accessible.PutVoid());
  }

  std::wstring Text(LONG child, HRESULT (STDMETHODCALLTYPE IAccessible::*get)(VARIANT, BSTR*)) {
    Bstr text;
    (m_accessible.Get()->*get)(NumberVariant(child), text.Put());
    return text ? text.Get() : L"";
  }
  std::wstring Name(LONG child) { return Text(child, &IAccessible::get_accName); }
  std::wstring Value(LONG child) { return Text(child, &IAccessible::get_accValue); }
  LONG Role(LONG child) {
    VARIANT role = {};
    m_accessible->get_accRole(NumberVariant(child), &role);
    return role.lVal;
  }
  LONG State(LONG child) {
    VARIANT state = {};
    m_accessible->get_accState(NumberVariant(child), &state);
    return state.lVal;
  }
  LONG FocusedChild() {
    VARIANT focus = {};
    return m_accessible->get_accFocus(&focus) == S_OK ? focus.lVal : -1;
  }

  ComApartment m_apartment;
  ComPtr<IAccessible> m_accessible;
};

TEST_F(LabelAccessibilityTest, IsATextWithoutItsTags) {
  ASSERT_TRUE(m_accessible);
  EXPECT_EQ(Name(CHILDID_SELF), L"Read the first or two");
  EXPECT_EQ(Role(CHILDID_SELF), ROLE_SYSTEM_STATICTEXT);
  m_label.SetText(L"&copy; new");
  EXPECT_EQ(Name(CHILDID_SELF), L"\xA9 new");
}

TEST_F(LabelAccessibilityTest, HasItsLinksAsChildren) {
  ASSERT_TRUE(m_accessible);
  LONG count = 0;
  EXPECT_EQ(m_accessible->get_accChildCount(&count), S_OK);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(Name(1), L"the first");
  EXPECT_EQ(Value(1), L"\"http://one\"");
  EXPECT_EQ(Role(1), ROLE_SYSTEM_LINK);
  EXPECT_EQ(Name(2), L"two");
  EXPECT_EQ(Value(2), L"http://two");
  EXPECT_EQ(Name(3), L"");
  EXPECT_EQ(Value(CHILDID_SELF), L"");
}

TEST_F(LabelAccessibilityTest, TellsWhichLinkHasTheFocus) {
  ASSERT_TRUE(m_accessible);
  constexpr LONG kBase = STATE_SYSTEM_LINKED | STATE_SYSTEM_FOCUSABLE;
  EXPECT_EQ(State(1), kBase);
  EXPECT_EQ(FocusedChild(), -1);
  ::SetFocus(m_label.Handle());
  PressKey(VK_TAB);
  EXPECT_EQ(State(1), kBase);
  EXPECT_EQ(State(2), kBase | STATE_SYSTEM_FOCUSED);
  EXPECT_EQ(FocusedChild(), 2);
  ::EnableWindow(m_label.Handle(), FALSE);
  EXPECT_EQ(State(1), kBase | STATE_SYSTEM_UNAVAILABLE);
  VARIANT state = {};
  EXPECT_EQ(m_accessible->get_accState(NumberVariant(3), &state), E_INVALIDARG);
}

TEST_F(LabelAccessibilityTest, AnnouncesEachLinkThatGetsTheFocus) {
  ::SetFocus(m_before);
  WinEvents events;
  PressKey(VK_TAB);
  PressKey(VK_TAB);
  std::vector<LONG> children;
  for (const WinEvent& event : events.Of(m_label.Handle(), {EVENT_OBJECT_FOCUS})) {
    if (event.object == OBJID_CLIENT && event.child != CHILDID_SELF) {
      children.push_back(event.child);
    }
  }
  EXPECT_THAT(children, ElementsAre(1, 2));
}

TEST_F(LabelAccessibilityTest, TellsThePlacesOfLinks) {
  ASSERT_TRUE(m_accessible);
  const LabelRect first = m_label.LinkPlaces()[0].place;
  const LabelRect second = m_label.LinkPlaces()[1].place;
  POINT origin = {first.left, std::min(first.top, second.top)};
  ::ClientToScreen(m_label.Handle(), &origin);
  LONG left = 0;
  LONG top = 0;
  LONG width = 0;
  LONG height = 0;
  EXPECT_EQ(m_accessible->accLocation(&left, &top, &width, &height, NumberVariant(1)), S_OK);
  EXPECT_EQ(left, origin.x);
  EXPECT_EQ(top, origin.y);
  EXPECT_EQ(width, second.right - first.left);
  EXPECT_EQ(height, first.bottom - first.top);
  VARIANT hit = {};
  EXPECT_EQ(m_accessible->accHitTest(left + 2, top + 2, &hit), S_OK);
  EXPECT_EQ(hit.lVal, 1);
  EXPECT_EQ(m_accessible->accHitTest(left + 200, top + 100, &hit), S_OK);
  EXPECT_EQ(hit.lVal, CHILDID_SELF);
  EXPECT_EQ(m_accessible->accLocation(&left, &top, &width, &height, NumberVariant(9)),
            E_INVALIDARG);
}

TEST_F(LabelAccessibilityTest, FocusesAndOpensLinksOnRequest) {
  ASSERT_TRUE(m_accessible);
  EXPECT_EQ(m_accessible->accSelect(SELFLAG_TAKEFOCUS, NumberVariant(2)), S_OK);
  EXPECT_EQ(FocusedChild(), 2);
  EXPECT_EQ(m_accessible->accDoDefaultAction(NumberVariant(1)), S_OK);
  EXPECT_THAT(m_shell.actions, IsEmpty());  // not before the call has returned
  Pump();
  EXPECT_THAT(m_shell.actions, ElementsAre(L"open http://one"));
  EXPECT_EQ(m_accessible->accDoDefaultAction(NumberVariant(3)), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(m_accessible->accSelect(SELFLAG_TAKEFOCUS, NumberVariant(3)), E_INVALIDARG);
}

TEST_F(LabelAccessibilityTest, OpensNothingWhileItsDialogTakesNoInput) {
  ASSERT_TRUE(m_accessible);
  EXPECT_EQ(m_accessible->accDoDefaultAction(NumberVariant(1)), S_OK);
  ::EnableWindow(m_parent.Handle(), FALSE);
  Pump();
  EXPECT_THAT(m_shell.actions, IsEmpty()) << "a link opened that was asked for before";
  EXPECT_NE(State(1) & STATE_SYSTEM_UNAVAILABLE, 0);
  EXPECT_EQ(m_accessible->accDoDefaultAction(NumberVariant(1)), DISP_E_MEMBERNOTFOUND);
  ::EnableWindow(m_parent.Handle(), TRUE);
  ::EnableWindow(m_label.Handle(), FALSE);
  EXPECT_EQ(m_accessible->accDoDefaultAction(NumberVariant(1)), DISP_E_MEMBERNOTFOUND);
  Pump();
  EXPECT_THAT(m_shell.actions, IsEmpty());
}

TEST_F(LabelAccessibilityTest, MayOutliveTheLabel) {
  ASSERT_TRUE(m_accessible);
  ::DestroyWindow(m_label.Handle());
  LONG count = 7;
  EXPECT_EQ(m_accessible->get_accChildCount(&count), S_OK);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(Name(1), L"");
  EXPECT_NE(m_accessible->accDoDefaultAction(NumberVariant(1)), S_OK);
  EXPECT_EQ(FocusedChild(), -1);
}

}  // namespace
}  // namespace postmarker::test
