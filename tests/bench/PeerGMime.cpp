#include <gmime/gmime.h>

#include "PeerLibraries.h"

namespace postmarker::bench {
namespace {

struct Walk {
  PeerResult result;
  bool decode;
};

void VisitPart(GMimeObject* /*parent*/, GMimeObject* object, gpointer data) {
  auto* const walk = static_cast<Walk*>(data);
  ++walk->result.parts;
  if (!walk->decode || !GMIME_IS_PART(object)) {
    return;
  }
  GMimeDataWrapper* const content = g_mime_part_get_content(GMIME_PART(object));
  if (content != nullptr) {
    GMimeStream* const null = g_mime_stream_null_new();
    const ssize_t written = g_mime_data_wrapper_write_to_stream(content, null);
    walk->result.decodedBytes += written > 0 ? static_cast<size_t>(written) : 0;
    g_object_unref(null);
  }
}

}  // namespace

PeerResult ReadWithGMime(std::string_view message, bool decode) {
  static const bool ready = (g_mime_init(), true);
  Walk walk = {{}, ready && decode};
  GMimeStream* const stream = g_mime_stream_mem_new_with_buffer(message.data(), message.size());
  GMimeParser* const parser = g_mime_parser_new_with_stream(stream);
  GMimeMessage* const parsed = g_mime_parser_construct_message(parser, nullptr);
  if (parsed != nullptr) {
    g_mime_message_foreach(parsed, VisitPart, &walk);
    g_object_unref(parsed);
  }
  g_object_unref(parser);
  g_object_unref(stream);
  return walk.result;
}

}  // namespace postmarker::bench
