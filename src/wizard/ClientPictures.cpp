#include "wizard/ClientPictures.h"

#include <algorithm>
#include <iterator>

#include "resource.h"
#include "support/Text.h"

namespace postmarker {
namespace {

struct TilePicture {
  std::wstring_view displayName;
  unsigned bitmap;
};

constexpr TilePicture kPictures[] = {
    {L"Microsoft Outlook", IDB_TILE_OUTLOOK},
    {L"Windows Mail", IDB_TILE_WINDOWS_MAIL},
    {L"Outlook Express", IDB_TILE_OUTLOOK_EXPRESS},
    {L"Windows Live Mail", IDB_TILE_WINDOWS_LIVE_MAIL},
    {L"Mozilla Thunderbird", IDB_TILE_THUNDERBIRD},
    {L"IncrediMail", IDB_TILE_INCREDIMAIL},
};

}  // namespace

unsigned TilePictureOf(std::wstring_view displayName) {
  const auto* const found = std::find_if(std::begin(kPictures), std::end(kPictures),
                                         [displayName](const TilePicture& picture) {
                                           return EqualNoCase(picture.displayName, displayName);
                                         });
  return found == std::end(kPictures) ? 0 : found->bitmap;
}

}  // namespace postmarker
