// Walks an Internet message: its entities, their headers and their decoded bodies.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/message/ContentType.h"
#include "analysis/message/HeaderMap.h"
#include "analysis/message/TransferDecoder.h"
#include "support/Results.h"

namespace postmarker {

// The walk of one message held in memory. What is found goes to the virtual hooks, in a fixed order
// that is the real interface of this class; decoded text, PDF documents and pictures are kept
// beside. All text is bytes; no charset is looked at. Malformed messages are never an error, and no
// input makes the walk deep or slow: its time is linear in the message's size, and nested entities
// take no stack.
//
// Hooks may throw: that ends the walk, and what was gathered stays. One thread per object. Results
// stay until the next parse.
//
// The hooks are called so, for each entity at its level:
//   SelectHeaders, bytes of the header block, OnHeaders(false),
//   for a multipart: OnBodyBegin, bytes, OnBodyEnd, OnBodyDone for what stands before the
//   first part,
//     and then its parts at the next level,
//   OnHeaders(true), OnBodyBegin, bytes, OnBodyEnd, OnBodyDone.
// A message in a message has its own header block at the next level, and no hooks of the outer one
// follow. OnBodyEnd is left out where a body should end at a boundary that never comes; the line
// with the boundary follows OnBodyEnd.
class KsMailParser {
 public:
  KsMailParser() = default;
  KsMailParser(const KsMailParser&) = delete;
  KsMailParser& operator=(const KsMailParser&) = delete;
  virtual ~KsMailParser();

  // Walks a message. Returns what OnParseBegin returned; 0x80004005 for a null pointer or a size of
  // 0. The bytes need not outlive the call.
  virtual ResultCode ParseBuffer(const char* data, uint32_t size);

  // Walks the message in a file, which a running mail client may hold open. `path` is UTF-16.
  // 0x80004005 where the file is empty or can't be read.
  virtual ResultCode ParseFile(const wchar_t* path);

  // Forgets the results and all state.
  void Reset();

  // The next byte of the message. False, and a NUL, at the end. For overrides of the operations
  // that read.
  bool ReadByte(uint8_t* byte);

  // Captured texts, at most 3 of each kind and 0x1FFFF bytes of each.
  [[nodiscard]] const std::vector<std::string>& PlainParts() const { return m_plainParts; }
  [[nodiscard]] const std::vector<std::string>& HtmlParts() const { return m_htmlParts; }
  // Captured attachments, each below 0x20000 bytes: a larger one is dropped whole.
  [[nodiscard]] const std::vector<std::string>& PdfBlobs() const { return m_pdfBlobs; }
  [[nodiscard]] const std::vector<std::string>& ImageBlobs() const { return m_imageBlobs; }

 protected:
  // The walk begins; a negative result ends it at once, and OnParseEnd is not called.
  virtual ResultCode OnParseBegin();
  virtual ResultCode OnParseEnd();

  // One byte of a body or of a header block, decoded; the base keeps what is captured.
  virtual void OnBodyByte(uint8_t byte, bool inHeader, int level);

  // One byte as it stands in the message; the base undoes the transfer encoding and calls
  // OnBodyByte.
  virtual void OnRawByte(uint8_t byte, bool inHeader, int level);

  // May put the keys of the headers to read into the empty map; left empty, all are read.
  virtual void SelectHeaders(HeaderMap* wanted, int level);

  // The headers of an entity, before its body and again after all its parts. The result is
  // not used.
  virtual ResultCode OnHeaders(HeaderMap* headers, int level, bool afterChildren);

  // False ends the walk of an entity after its header block.
  virtual bool WantsBody();

  virtual void OnBodyBegin(int level);
  virtual void OnBodyEnd(int level);
  virtual void OnBodyDone(int level);

  // Reads a header block from the read position on, and gives its bytes to OnRawByte. `headers` may
  // be null.
  virtual void ParseHeaderBlock(int level, HeaderMap* headers);

  // Reads one entity and all below it. `boundary` is the one of the multipart around it. True if
  // another part follows. Entities below are read by the same call: an override sees the outermost
  // one.
  virtual bool ParseEntity(int level, const std::string& boundary);

  // Reads the body of an entity up to the line with `boundary`, or to the end where this is empty.
  // True if another part follows.
  virtual bool ParseBody(int level, const std::string& boundary);

  // What the current entity is.
  [[nodiscard]] virtual bool IsQuotedPrintable() const { return m_type.quotedPrintable; }
  [[nodiscard]] virtual bool IsText() const { return m_type.text; }
  [[nodiscard]] virtual bool IsBase64() const { return m_type.base64; }
  [[nodiscard]] virtual bool IsHtml() const { return m_type.html; }
  [[nodiscard]] virtual bool IsPdf() const { return m_type.pdf; }
  [[nodiscard]] virtual bool IsImage() const { return m_type.image; }
  [[nodiscard]] virtual bool IsMultipart() const { return m_type.multipart; }
  // Lower-case type and subtype; "text/plain" where there is no content type.
  [[nodiscard]] virtual std::string GetContentType() const { return m_type.type; }
  // The "name" parameter.
  [[nodiscard]] virtual std::string GetPartName() const { return m_type.partName; }

  // True if OnRawByte and OnBodyByte have to see each byte. A class that leaves both alone says
  // false and gets its bodies in runs, which is faster.
  [[nodiscard]] virtual bool WantsSingleBytes() const;

  // Decoded bytes of a body, where no single bytes are wanted; takes the place of OnBodyByte.
  virtual void OnBodyRun(std::string_view bytes, int level);

 private:
  struct Multipart;

  // What follows the header block of an entity.
  enum class Kind : uint8_t { kUnwanted, kMessage, kMultipart, kSimple };

  // Where a body's captured bytes go.
  enum class Capture : uint8_t { kNothing, kText, kBlob };

  void AnalyzeContentType(HeaderMap* headers) { m_type = ReadContentType(headers); }
  Kind OpenEntity(int level, HeaderMap* headers, std::string_view* inner);
  bool CloseEntity(int level, const std::string& boundary, HeaderMap* headers);
  void SendBody(std::string_view bytes, int level);
  void CaptureBytes(std::string_view bytes);
  void BeginTextCapture(std::vector<std::string>* parts);
  void ForgetCapture();

  ContentType m_type;
  std::vector<std::string> m_plainParts;
  std::vector<std::string> m_htmlParts;
  std::vector<std::string> m_pdfBlobs;
  std::vector<std::string> m_imageBlobs;
  const char* m_data = nullptr;  // not owned
  uint32_t m_size = 0;
  uint32_t m_position = 0;
  Capture m_capturing = Capture::kNothing;
  std::string* m_captureBuffer = nullptr;  // into a list of texts, or m_blob
  bool m_captureFull = false;
  std::string m_blob;
  TransferDecoder m_decoder;
};

}  // namespace postmarker
