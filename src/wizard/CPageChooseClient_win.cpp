#include "wizard/CPageChooseClient_win.h"

#include <algorithm>

#include "clients/ClientTable.h"
#include "resource.h"
#include "settings/GlobalSettings.h"
#include "ui/CWinApp.h"
#include "wizard/CPostmarkerApp_win.h"
#include "wizard/ClientOffers.h"
#include "wizard/ClientPictures.h"
#include "wizard/WizardServices_win.h"

namespace postmarker {
namespace {

constexpr int kTileWidth = 125;
constexpr COLORREF kTransparent = RGB(255, 255, 255);

BitmapHandle LoadTile(unsigned id) {
  return BitmapHandle(static_cast<HBITMAP>(::LoadImageW(
      AfxGetResourceHandle(), MAKEINTRESOURCEW(id), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
}

// The flags of an image list for pictures like this one. The flag of a color depth is its number.
UINT ImageListFlags(const BITMAP& picture) {
  return static_cast<UINT>(picture.bmBitsPixel) | ILC_MASK;
}

std::vector<ClientOffer> LookForClients(const WizardServices& wizard) {
  std::vector<ClientOffer> offers;
  for (const ClientRow& row : AllClients()) {
    const std::wstring name(row.displayName);
    const bool installed = wizard.IsClientInstalled(name);
    offers.push_back({name, std::wstring(row.settingsName), wizard.IsClientSupported(name),
                      installed, installed && wizard.IsClientReady(name)});
  }
  return offers;
}

}  // namespace

const MessageEntry CPageChooseClient::kEntries[] = {
    OnNotify(IDC_CLIENT_GRID, static_cast<UINT>(LVN_ITEMCHANGED),
             &CPageChooseClient::HandleItemChanged),
    OnMessage(KsImageGridCtrl::kActivityMessage, &CPageChooseClient::HandleActivity),
    OnMessage(WM_DRAWITEM, &CPageChooseClient::HandleDrawItem),
    OnMessage(WM_MEASUREITEM, &CPageChooseClient::HandleMeasureItem),
};
const MessageTable CPageChooseClient::kMessages = {&CPageWizardDefault::kMessages,
                                                   CPageChooseClient::kEntries};

CPageChooseClient::CPageChooseClient(WizardServices* wizard)
    : CPageWizardDefault(wizard, IDD_PAGE_CHOOSE_CLIENT, PSWIZB_NEXT) {}

void CPageChooseClient::DoDataExchange(const CDataExchange& /*exchange*/) {
  m_clientGrid.Attach(Item(IDC_CLIENT_GRID));
}

bool CPageChooseClient::OnInitDialog() {
  CPageWizardDefault::OnInitDialog();
  m_clientGrid.Initialise(CurrentScreenScale().Width(kTileWidth));
  ::SetFocus(m_clientGrid.Handle());
  FillList();
  return true;
}

void CPageChooseClient::BuildImageList() {
  for (const ClientRow& client : AllClients()) {
    const unsigned bitmap = TilePictureOf(client.displayName);
    const BitmapHandle tile = bitmap != 0 ? LoadTile(bitmap) : BitmapHandle();
    BITMAP picture = {};
    if (!tile || ::GetObjectW(tile.Get(), sizeof(picture), &picture) == 0) {
      continue;
    }
    if (!m_clientImages) {
      // The first picture tells what all are like.
      m_clientImages.Reset(::ImageList_Create(picture.bmHeight, picture.bmHeight,
                                              ImageListFlags(picture),
                                              static_cast<int>(AllClients().size()), 0));
    }
    if (::ImageList_AddMasked(m_clientImages.Get(), tile.Get(), kTransparent) >= 0) {
      m_bitmaps.push_back(bitmap);
    }
  }
}

void CPageChooseClient::AddRow(const ClientRow& client, const std::wstring& status, bool enabled) {
  const auto image =
      std::find(m_bitmaps.begin(), m_bitmaps.end(), TilePictureOf(client.displayName));
  const IconHandle icon(image != m_bitmaps.end()
                            ? ::ImageList_GetIcon(m_clientImages.Get(),
                                                  static_cast<int>(image - m_bitmaps.begin()),
                                                  ILD_NORMAL)
                            : nullptr);
  m_clientGrid.AddEntry(std::wstring(client.displayName), status, icon.Get(), enabled);
}

void CPageChooseClient::FillList() {
  BuildImageList();
  const std::wstring lastClient = GetActionPlugin();
  std::wstring notFound = LoadText(IDS_CLIENT_NOT_FOUND);
  if (notFound.empty()) {
    notFound = L"Not found";
  }
  const std::vector<ClientOffer> offers = LookForClients(Wizard());
  for (const ClientTile& tile : TilesOf(offers, notFound, LoadText(IDS_CLIENT_NOT_READY))) {
    AddRow(*FindClient(tile.name), tile.status, tile.isEnabled);
  }
  const int selected = TileToSelect(offers, lastClient);
  if (selected != -1) {
    m_clientGrid.SelectEntry(selected);
  }
}

bool CPageChooseClient::OnKillActive() {
  return UpdateData(true) && Succeeded(StoreChoice()) && CPageWizardDefault::OnKillActive();
}

ResultCode CPageChooseClient::StoreChoice() {
  const std::wstring name = m_clientGrid.SelectedText();
  if (name.empty()) {
    ShowAtNext(LoadText(IDS_MUST_SELECT_CLIENT));
    return kFail;
  }
  m_tooltip.Hide();
  const ResultCode result = Wizard().ChooseClient(name);
  if (Succeeded(result)) {
    ::EnableWindow(m_clientGrid.Handle(), FALSE);
  }
  return result;
}

LRESULT CPageChooseClient::HandleItemChanged(const MessageArgs& /*args*/) {
  m_tooltip.Hide();
  return 0;
}

LRESULT CPageChooseClient::HandleActivity(const MessageArgs& /*args*/) {
  m_tooltip.Hide();
  return 0;
}

LRESULT CPageChooseClient::HandleDrawItem(const MessageArgs& args) {
  return m_clientGrid.DrawItem(args);
}

LRESULT CPageChooseClient::HandleMeasureItem(const MessageArgs& args) {
  return m_clientGrid.MeasureItem(args);
}

}  // namespace postmarker
