#include "input/XmlNode.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

constexpr const char* kErrorTexts[] = {
    "No error",
    "Warning: Unmatched end tag",
    "Warning: No XML tag found",
    "Error: No XML data",
    "Error: Missing start tag name",
    "Error: Missing end tag name",
    "Error: Unmatched end tag",
    "Error: Unmatched clear tag end",
    "Error: Unexpected token found",
    "Error: No elements found",
    "Error: File not found",
    "Error: First Tag not found",
    "Error: Unknown character entity",
    "Error: Character code above 255 is forbidden in MultiByte char mode.",
    "Error: unable to convert between WideChar and MultiByte chars",
    "Error: unable to open file for writing",
    "Error: cannot write into file",
    "Warning: Base64-string length is not a multiple of 4",
    "Error: Base64-string contains an illegal character",
    "Warning: Base64-string is truncated",
    "Error: Base64 decode output buffer is too small",
};
constexpr int kErrorCount = static_cast<int>(sizeof(kErrorTexts) / sizeof(kErrorTexts[0]));

struct NamedEntity {
  std::string_view name;
  char value;
};
constexpr NamedEntity kNamedEntities[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Name characters of XML restricted to 8-bit text: every byte above 127 may belong to a name,
// which keeps names in any of the multi-byte encodings readable.
bool isNameStart(char ch) {
  const auto c = static_cast<unsigned char>(ch);
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' || c >= 0x80;
}
bool isNameChar(char c) {
  return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

int digitValue(char c, bool hex) {
  if (c >= '0' && c <= '9') return c - '0';
  if (hex && c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (hex && c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool equalsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

std::size_t skipSpace(std::string_view s, std::size_t p) {
  while (p < s.size() && isSpace(s[p])) ++p;
  return p;
}

// Appends raw character data to out with references replaced and line ends normalised (CR LF
// and a lone CR become LF). In attribute values literal tabs and line ends then become blanks,
// as XML normalises them; references to such characters are kept. Returns 0, or an error code
// with errorAt set to the offset in raw of the faulty reference.
int decodeInto(std::string_view raw, bool attribute, std::string& out, std::size_t& errorAt) {
  const std::size_t n = raw.size();
  for (std::size_t i = 0; i < n;) {
    char c = raw[i];
    if (c == '&') {
      errorAt = i;
      std::size_t j = i + 1;
      if (j < n && raw[j] == '#') {
        const bool hex = j + 1 < n && raw[j + 1] == 'x';
        j += hex ? 2 : 1;
        unsigned value = 0;
        std::size_t digits = 0;
        for (int d; j < n && (d = digitValue(raw[j], hex)) >= 0; ++j, ++digits) {
          // Stop accumulating once above 255: the code is refused anyway, and long digit
          // strings must not overflow.
          if (value <= 255) value = value * (hex ? 16 : 10) + static_cast<unsigned>(d);
        }
        // Code 0 is no character in XML (and would end an 8-bit text early).
        if (digits == 0 || j >= n || raw[j] != ';' || value == 0)
          return eXMLErrorUnknownCharacterEntity;
        if (value > 255) return eXMLErrorCharacterCodeAbove255;
        out.push_back(static_cast<char>(value));
        i = j + 1;
        continue;
      }
      while (j < n && isNameChar(raw[j])) ++j;
      if (j >= n || raw[j] != ';') return eXMLErrorUnknownCharacterEntity;
      const std::string_view name = raw.substr(i + 1, j - i - 1);
      bool known = false;
      for (const NamedEntity& e : kNamedEntities) {
        if (e.name == name) {
          out.push_back(e.value);
          known = true;
          break;
        }
      }
      if (!known) return eXMLErrorUnknownCharacterEntity;
      i = j + 1;
      continue;
    }
    if (c == '\r') {
      c = '\n';
      if (i + 1 < n && raw[i + 1] == '\n') ++i;
    }
    if (attribute && (c == '\n' || c == '\t')) c = ' ';
    out.push_back(c);
    ++i;
  }
  return eXMLErrorNone;
}

void appendCharRef(std::string& out, unsigned char c) {
  out += "&#";
  out += std::to_string(static_cast<unsigned>(c));
  out += ';';
}

// Writes text or an attribute value so that reading it back gives the same bytes: the five
// special characters as named entities, CR (which reading would turn into LF) as a reference,
// in attributes tab and LF too (reading turns them into blanks), and in text the white space at
// either end (reading trims it).
void appendEscaped(std::string& out, const std::string& s, bool attribute) {
  std::size_t lead = 0;
  while (lead < s.size() && isSpace(s[lead])) ++lead;
  std::size_t trail = 0;
  while (trail < s.size() - lead && isSpace(s[s.size() - 1 - trail])) ++trail;
  for (std::size_t i = 0; i < s.size(); ++i) {
    const char c = s[i];
    switch (c) {
      case '&': out += "&amp;"; continue;
      case '<': out += "&lt;"; continue;
      case '>': out += "&gt;"; continue;
      case '"': out += "&quot;"; continue;
      case '\'': out += "&apos;"; continue;
      default: break;
    }
    const bool edge = i < lead || i >= s.size() - trail;
    if (c == '\r' || (attribute && (c == '\t' || c == '\n')) || (!attribute && edge && isSpace(c)))
      appendCharRef(out, static_cast<unsigned char>(c));
    else
      out.push_back(c);
  }
}

// Number of bytes of the character that starts with c, for column counting.
std::size_t characterBytes(unsigned char c, XmlCharEncoding encoding) {
  switch (encoding) {
    case XmlCharEncoding::ShiftJIS:
      return ((c >= 0x81 && c <= 0x9F) || (c >= 0xE0 && c <= 0xFC)) ? 2 : 1;
    case XmlCharEncoding::GB2312:
    case XmlCharEncoding::Big5:
    case XmlCharEncoding::GBK:
      return (c >= 0x81 && c <= 0xFE) ? 2 : 1;
    default:
      return 1;
  }
}

// Base64 decoding table: a sextet 0 to 63, or one of the four classes below.
enum : unsigned char { kB64White = 64, kB64Pad = 65, kB64End = 66, kB64Illegal = 67 };

constexpr std::array<unsigned char, 256> makeBase64Table() {
  std::array<unsigned char, 256> t{};
  for (auto& v : t) v = kB64Illegal;
  constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (unsigned char i = 0; i < 64; ++i) t[static_cast<unsigned char>(alphabet[i])] = i;
  t['\t'] = t['\n'] = t['\r'] = t[' '] = kB64White;
  t['='] = kB64Pad;
  t[0] = kB64End;
  return t;
}
constexpr std::array<unsigned char, 256> kBase64Table = makeBase64Table();

}  // namespace

// ---------------------------------------------------------------------------------------------
// Node data

struct XmlNode::Data {
  std::string name;
  std::vector<std::shared_ptr<Data>> children;
  std::vector<XmlAttribute> attributes;
  std::vector<std::string> texts;
  // Texts and children interleave in a document; one flag per content item (1 for a text) keeps
  // that order for writing. The k-th flag set to 1 stands for texts[k].
  std::vector<unsigned char> isTextItem;
  std::weak_ptr<Data> parent;

  ~Data();

  void appendChild(const std::shared_ptr<Data>& self, std::shared_ptr<Data> child) {
    child->parent = self;
    children.push_back(std::move(child));
    isTextItem.push_back(0);
  }
};

// Tears the subtree down with an explicit list instead of nested destructor calls, so that a
// very deep document cannot exhaust the stack when its tree is freed.
XmlNode::Data::~Data() {
  std::vector<std::shared_ptr<Data>> pending = std::move(children);
  while (!pending.empty()) {
    std::shared_ptr<Data> node = std::move(pending.back());
    pending.pop_back();
    if (node.use_count() == 1) {
      for (auto& c : node->children) pending.push_back(std::move(c));
      node->children.clear();
    }
  }
}

// ---------------------------------------------------------------------------------------------
// Reading

// One pass over the text with an explicit stack of open elements (no recursion, so nesting
// depth is bounded by memory only). The first problem ends the pass, except missing end tags
// at the end of the text, which are a warning with the tree kept.
class XmlNode::Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  std::shared_ptr<Data> run();
  // The first element of that name, depth first from the document element, or null.
  std::shared_ptr<Data> find(const std::string& name) const;

  int error() const { return error_; }
  std::size_t errorAt() const { return errorAt_; }
  std::size_t documentAt() const { return documentAt_; }
  void locate(std::size_t offset, int& line, int& column) const;

 private:
  bool fail(int code, std::size_t at) {
    error_ = code;
    errorAt_ = at;
    return false;
  }
  bool charData(std::size_t begin, std::size_t end);
  bool markup();
  bool processingInstruction();
  bool skipPast(std::string_view opener, std::string_view closer);
  bool cdata();
  bool doctype();
  bool endTag();
  bool startTag();
  void readDeclaration(std::string_view body);
  void addText(std::string text);

  std::string_view text_;
  std::size_t start_ = 0;  // after a byte order mark
  std::size_t pos_ = 0;
  bool sawMarkup_ = false;
  XmlCharEncoding encoding_ = XmlCharEncoding::UTF8;  // the XML default without a declaration
  std::vector<std::shared_ptr<Data>> open_;
  std::shared_ptr<Data> document_;
  std::size_t documentAt_ = 0;
  int error_ = eXMLErrorNone;
  std::size_t errorAt_ = 0;
};

std::shared_ptr<XmlNode::Data> XmlNode::Parser::run() {
  const std::size_t n = text_.size();
  if (text_.substr(0, 3) == "\xEF\xBB\xBF") start_ = 3;
  pos_ = start_;
  const std::size_t first = skipSpace(text_, pos_);
  if (first == n) {
    fail(eXMLErrorEmpty, first);
    return nullptr;
  }
  if (text_.find('<', first) == std::string_view::npos) {
    fail(eXMLErrorNoXMLTagFound, first);
    return nullptr;
  }
  while (pos_ < n) {
    std::size_t lt = text_.find('<', pos_);
    if (lt == std::string_view::npos) lt = n;
    if (!charData(pos_, lt)) return nullptr;
    pos_ = lt;
    if (pos_ < n && !markup()) return nullptr;
  }
  if (!document_) {
    fail(eXMLErrorNoElements, n);
    return nullptr;
  }
  if (!open_.empty()) fail(eXMLErrorMissingEndTag, n);
  return document_;
}

void XmlNode::Parser::addText(std::string text) {
  Data& node = *open_.back();
  node.texts.push_back(std::move(text));
  node.isTextItem.push_back(1);
}

bool XmlNode::Parser::charData(std::size_t begin, std::size_t end) {
  std::size_t b = skipSpace(text_, begin);
  if (b >= end) return true;
  if (open_.empty()) return fail(eXMLErrorUnexpectedToken, b);  // text outside the element
  std::size_t e = end;
  while (e > b && isSpace(text_[e - 1])) --e;
  // Trimming comes before decoding, so white space written as references survives.
  std::string decoded;
  std::size_t at = 0;
  if (int code = decodeInto(text_.substr(b, e - b), false, decoded, at)) return fail(code, b + at);
  addText(std::move(decoded));
  return true;
}

bool XmlNode::Parser::markup() {
  const std::string_view rest = text_.substr(pos_);
  bool ok;
  if (rest.starts_with("<?")) ok = processingInstruction();
  else if (rest.starts_with("<!--")) ok = skipPast("<!--", "-->");
  else if (rest.starts_with("<![CDATA[")) ok = cdata();
  else if (rest.starts_with("<!DOCTYPE")) ok = doctype();
  else if (rest.starts_with("<!")) ok = fail(eXMLErrorUnexpectedToken, pos_);
  else if (rest.starts_with("</")) ok = endTag();
  else ok = startTag();
  sawMarkup_ = true;
  return ok;
}

// Comments and processing instructions are skipped; one that never ends is error 7.
bool XmlNode::Parser::skipPast(std::string_view opener, std::string_view closer) {
  const std::size_t close = text_.find(closer, pos_ + opener.size());
  if (close == std::string_view::npos) return fail(eXMLErrorUnmatchedEndClearTag, pos_);
  pos_ = close + closer.size();
  return true;
}

bool XmlNode::Parser::processingInstruction() {
  const std::size_t at = pos_;
  if (!skipPast("<?", "?>")) return false;
  // Only a leading <?xml ...?> is the declaration; a target such as xml-stylesheet is not.
  const std::string_view body = text_.substr(at + 2, pos_ - 2 - (at + 2));
  if (!sawMarkup_ && body.size() >= 3 && body.substr(0, 3) == "xml" &&
      (body.size() == 3 || isSpace(body[3])))
    readDeclaration(body.substr(3));
  return true;
}

// Only the encoding word matters; a malformed declaration keeps the default.
void XmlNode::Parser::readDeclaration(std::string_view body) {
  const std::size_t key = body.find("encoding");
  if (key == std::string_view::npos) return;
  std::size_t p = skipSpace(body, key + 8);
  if (p >= body.size() || body[p] != '=') return;
  p = skipSpace(body, p + 1);
  if (p >= body.size() || (body[p] != '"' && body[p] != '\'')) return;
  const std::size_t close = body.find(body[p], p + 1);
  if (close == std::string_view::npos) return;
  encoding_ = XmlNode::encodingFromName(std::string(body.substr(p + 1, close - p - 1)));
}

// A CDATA section is one text item, taken as it stands (only line ends are normalised).
bool XmlNode::Parser::cdata() {
  if (open_.empty()) return fail(eXMLErrorUnexpectedToken, pos_);
  const std::size_t begin = pos_ + 9;
  if (!skipPast("<![CDATA[", "]]>")) return false;
  const std::string_view raw = text_.substr(begin, pos_ - 3 - begin);
  std::string content;
  content.reserve(raw.size());
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == '\r') {
      content.push_back('\n');
      if (i + 1 < raw.size() && raw[i + 1] == '\n') ++i;
    } else {
      content.push_back(raw[i]);
    }
  }
  addText(std::move(content));
  return true;
}

// The document type declaration is skipped whole, internal subset included; it may only stand
// before the document element.
bool XmlNode::Parser::doctype() {
  if (document_) return fail(eXMLErrorUnexpectedToken, pos_);
  const std::size_t n = text_.size();
  int depth = 0;
  for (std::size_t p = pos_ + 9; p < n; ++p) {
    const char c = text_[p];
    if (c == '"' || c == '\'') {
      p = text_.find(c, p + 1);
      if (p == std::string_view::npos) break;
    } else if (text_.substr(p).starts_with("<!--")) {
      p = text_.find("-->", p + 4);
      if (p == std::string_view::npos) break;
      p += 2;
    } else if (c == '[') {
      ++depth;
    } else if (c == ']') {
      if (depth > 0) --depth;
    } else if (c == '>' && depth == 0) {
      pos_ = p + 1;
      return true;
    }
  }
  return fail(eXMLErrorUnmatchedEndClearTag, pos_);
}

bool XmlNode::Parser::endTag() {
  const std::size_t n = text_.size();
  std::size_t p = pos_ + 2;
  if (p >= n || !isNameStart(text_[p])) return fail(eXMLErrorMissingEndTagName, pos_);
  const std::size_t nameBegin = p;
  while (p < n && isNameChar(text_[p])) ++p;
  const std::string_view name = text_.substr(nameBegin, p - nameBegin);
  p = skipSpace(text_, p);
  if (p >= n || text_[p] != '>') return fail(eXMLErrorUnexpectedToken, p);
  if (open_.empty() || open_.back()->name != name) return fail(eXMLErrorUnmatchedEndTag, pos_);
  open_.pop_back();
  pos_ = p + 1;
  return true;
}

bool XmlNode::Parser::startTag() {
  const std::size_t n = text_.size();
  std::size_t p = pos_ + 1;
  if (p >= n || !isNameStart(text_[p])) return fail(eXMLErrorMissingTagName, pos_);
  if (document_ && open_.empty()) return fail(eXMLErrorUnexpectedToken, pos_);  // a second root
  const std::size_t nameBegin = p;
  while (p < n && isNameChar(text_[p])) ++p;
  auto node = std::make_shared<Data>();
  node->name.assign(text_.substr(nameBegin, p - nameBegin));

  bool selfClosing = false;
  for (;;) {
    const std::size_t afterName = p;
    p = skipSpace(text_, p);
    if (p >= n) return fail(eXMLErrorUnexpectedToken, n);
    if (text_[p] == '>') {
      ++p;
      break;
    }
    if (text_[p] == '/') {
      if (p + 1 < n && text_[p + 1] == '>') {
        p += 2;
        selfClosing = true;
        break;
      }
      return fail(eXMLErrorUnexpectedToken, p);
    }
    // An attribute, which must be separated from what precedes it by white space.
    if (p == afterName || !isNameStart(text_[p])) return fail(eXMLErrorUnexpectedToken, p);
    const std::size_t attrBegin = p;
    while (p < n && isNameChar(text_[p])) ++p;
    XmlAttribute attribute;
    attribute.name.assign(text_.substr(attrBegin, p - attrBegin));
    p = skipSpace(text_, p);
    if (p >= n || text_[p] != '=') return fail(eXMLErrorUnexpectedToken, p);
    p = skipSpace(text_, p + 1);
    if (p >= n || (text_[p] != '"' && text_[p] != '\'')) return fail(eXMLErrorUnexpectedToken, p);
    const std::size_t close = text_.find(text_[p], p + 1);
    if (close == std::string_view::npos) return fail(eXMLErrorUnexpectedToken, p);
    const std::string_view raw = text_.substr(p + 1, close - p - 1);
    if (const std::size_t lt = raw.find('<'); lt != std::string_view::npos)
      return fail(eXMLErrorUnexpectedToken, p + 1 + lt);
    std::size_t at = 0;
    if (int code = decodeInto(raw, true, attribute.value, at)) return fail(code, p + 1 + at);
    for (const XmlAttribute& a : node->attributes)
      if (a.name == attribute.name) return fail(eXMLErrorUnexpectedToken, attrBegin);
    node->attributes.push_back(std::move(attribute));
    p = close + 1;
  }

  if (open_.empty()) {
    document_ = node;
    documentAt_ = pos_;
  } else {
    open_.back()->appendChild(open_.back(), node);
  }
  if (!selfClosing) open_.push_back(std::move(node));
  pos_ = p;
  return true;
}

std::shared_ptr<XmlNode::Data> XmlNode::Parser::find(const std::string& name) const {
  std::vector<const std::shared_ptr<Data>*> stack;
  if (document_) stack.push_back(&document_);
  while (!stack.empty()) {
    const std::shared_ptr<Data>& node = *stack.back();
    stack.pop_back();
    if (node->name == name) return node;
    for (auto it = node->children.rbegin(); it != node->children.rend(); ++it)
      stack.push_back(&*it);
  }
  return nullptr;
}

// Lines end at LF, CR LF or a lone CR. Columns count characters of the declared encoding, so a
// two-byte character of a multi-byte encoding is one column.
void XmlNode::Parser::locate(std::size_t offset, int& line, int& column) const {
  line = 1;
  column = 1;
  std::size_t i = start_;
  while (i < offset && i < text_.size()) {
    const auto c = static_cast<unsigned char>(text_[i]);
    if (c == '\n' || c == '\r') {
      ++line;
      column = 1;
      ++i;
      if (c == '\r' && i < offset && text_[i] == '\n') ++i;
      continue;
    }
    // In UTF-8 the continuation bytes 10xxxxxx belong to the character before them.
    if (encoding_ != XmlCharEncoding::UTF8 || (c & 0xC0) != 0x80) ++column;
    // A lead byte right before a line end is malformed; the line end still counts.
    const bool pair = characterBytes(c, encoding_) == 2 && i + 1 < text_.size() &&
                      text_[i + 1] != '\n' && text_[i + 1] != '\r';
    i += pair ? 2 : 1;
  }
}

XmlNode XmlNode::parseString(const std::string& text, const std::string& rootName,
                             XmlResults* results) {
  // The reader works on 8-bit C text: a zero byte ends it.
  std::string_view view(text);
  if (const std::size_t nul = view.find('\0'); nul != std::string_view::npos)
    view = view.substr(0, nul);

  Parser parser(view);
  std::shared_ptr<Data> result = parser.run();
  int code = parser.error();
  std::size_t at = parser.errorAt();
  if (result && !rootName.empty()) {
    result = parser.find(rootName);
    if (!result) {
      // Pointing at the document element: that is where the expected tag should have been.
      code = eXMLErrorFirstTagNotFound;
      at = parser.documentAt();
    }
  }
  if (results) {
    results->error = code;
    results->line = results->column = 0;
    if (code != eXMLErrorNone) parser.locate(at, results->line, results->column);
  }
  return XmlNode(std::move(result));
}

XmlNode XmlNode::parseFile(const std::string& path, const std::string& rootName,
                           XmlResults* results) {
  std::string content;
  bool readable = false;
  // Only a regular file counts: a directory opens on Linux but cannot be read, and a device
  // or pipe (/dev/zero) may never end.
  std::error_code ignored;
  std::FILE* f =
      std::filesystem::is_regular_file(path, ignored) ? std::fopen(path.c_str(), "rb") : nullptr;
  if (f) {
    char buffer[65536];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, f)) > 0) content.append(buffer, got);
    readable = !std::ferror(f);
    std::fclose(f);
  }
  if (!readable) {
    if (results) *results = XmlResults{eXMLErrorFileNotFound, 0, 0};
    return XmlNode();
  }
  return parseString(content, rootName, results);
}

// A parameter file that produced even a warning (end tags missing, for example after a file was
// cut short) is not trusted: every non-zero code ends the run.
XmlNode XmlNode::openFile(const std::string& path, const std::string& rootName) {
  XmlResults results;
  XmlNode node = parseFile(path, rootName, &results);
  if (results.error == eXMLErrorNone) return node;
  std::string message = "XML Parsing error inside file '" + path + "'.\n" +
                        getError(results.error) + "\nAt line " + std::to_string(results.line) +
                        ", column " + std::to_string(results.column) + ".\n";
  if (results.error == eXMLErrorFirstTagNotFound)
    message += "First Tag should be '" + rootName + "'";
  fatalWithStatus(message, 255);
}

const char* XmlNode::getError(int code) {
  return code >= 0 && code < kErrorCount ? kErrorTexts[code] : "Unknown";
}

XmlCharEncoding XmlNode::encodingFromName(const std::string& word) {
  for (const char* w : {"utf-8", "utf8"})
    if (equalsNoCase(word, w)) return XmlCharEncoding::UTF8;
  for (const char* w : {"shiftjis", "shift-jis", "sjis"})
    if (equalsNoCase(word, w)) return XmlCharEncoding::ShiftJIS;
  if (equalsNoCase(word, "GB2312")) return XmlCharEncoding::GB2312;
  if (equalsNoCase(word, "Big5")) return XmlCharEncoding::Big5;
  if (equalsNoCase(word, "GBK")) return XmlCharEncoding::GBK;
  return XmlCharEncoding::Legacy;
}

// ---------------------------------------------------------------------------------------------
// Tree access and building

XmlNode XmlNode::createRoot(const std::string& name) {
  auto data = std::make_shared<Data>();
  data->name = name;
  return XmlNode(std::move(data));
}

std::string XmlNode::name() const { return data_ ? data_->name : std::string(); }

XmlNode XmlNode::parent() const { return data_ ? XmlNode(data_->parent.lock()) : XmlNode(); }

int XmlNode::childCount() const { return data_ ? static_cast<int>(data_->children.size()) : 0; }

XmlNode XmlNode::child(int i) const {
  if (!data_ || i < 0 || i >= childCount()) return XmlNode();
  return XmlNode(data_->children[static_cast<std::size_t>(i)]);
}

XmlNode XmlNode::childByName(const std::string& name) const {
  if (data_)
    for (const auto& c : data_->children)
      if (c->name == name) return XmlNode(c);
  return XmlNode();
}

XmlNode XmlNode::addChild(const std::string& name) {
  if (!data_) return XmlNode();
  XmlNode child = createRoot(name);
  data_->appendChild(data_, child.data_);
  return child;
}

int XmlNode::textCount() const { return data_ ? static_cast<int>(data_->texts.size()) : 0; }

std::string XmlNode::text(int i) const {
  if (!data_ || i < 0 || i >= textCount()) return std::string();
  return data_->texts[static_cast<std::size_t>(i)];
}

// A position outside 0..textCount() appends. Inserted before text i, the new item also takes
// text i's place among the children.
void XmlNode::addText(const std::string& text, int position) {
  if (!data_) return;
  Data& d = *data_;
  if (position < 0 || position >= textCount()) {
    d.texts.push_back(text);
    d.isTextItem.push_back(1);
    return;
  }
  int seen = 0;
  for (std::size_t k = 0; k < d.isTextItem.size(); ++k) {
    if (d.isTextItem[k] && seen++ == position) {
      d.isTextItem.insert(d.isTextItem.begin() + static_cast<std::ptrdiff_t>(k), 1);
      break;
    }
  }
  d.texts.insert(d.texts.begin() + position, text);
}

int XmlNode::attributeCount() const {
  return data_ ? static_cast<int>(data_->attributes.size()) : 0;
}

XmlAttribute XmlNode::attribute(int i) const {
  if (!data_ || i < 0 || i >= attributeCount()) return XmlAttribute();
  return data_->attributes[static_cast<std::size_t>(i)];
}

std::string XmlNode::attributeValue(const std::string& name, bool* found) const {
  if (data_) {
    for (const XmlAttribute& a : data_->attributes) {
      if (a.name == name) {
        if (found) *found = true;
        return a.value;
      }
    }
  }
  if (found) *found = false;
  return std::string();
}

void XmlNode::addAttribute(const std::string& name, const std::string& value) {
  if (!data_) return;
  for (XmlAttribute& a : data_->attributes) {
    if (a.name == name) {
      a.value = value;
      return;
    }
  }
  data_->attributes.push_back({name, value});
}

// Empty components (a leading, doubled or trailing separator) are skipped.
XmlNode XmlNode::getChildByPath(const std::string& path, bool createMissing,
                                char separator) const {
  if (!data_) return XmlNode();
  XmlNode node = *this;
  std::size_t begin = 0;
  while (begin <= path.size()) {
    std::size_t end = path.find(separator, begin);
    if (end == std::string::npos) end = path.size();
    if (end > begin) {
      const std::string step = path.substr(begin, end - begin);
      XmlNode next = node.childByName(step);
      if (!next) {
        if (!createMissing) return XmlNode();
        next = node.addChild(step);
      }
      node = std::move(next);
    }
    begin = end + 1;
  }
  return node;
}

// ---------------------------------------------------------------------------------------------
// Writing

// Iterative, like the reader, so that any tree the reader accepts can be written. With format,
// an element with children puts each child and text on its own line, indented by tabs; an element
// with texts only keeps them on its line. Two neighbouring texts are kept apart by an empty
// comment, and an empty text is written as an empty CDATA section, so both survive a re-read.
void XmlNode::writeElement(const Data& root, bool format, std::string& out) {
  struct Frame {
    const Data* node;
    std::size_t item, text, child;
  };
  std::vector<Frame> stack;
  auto open = [&](const Data& d) {
    if (format) out.append(stack.size(), '\t');
    out += '<';
    out += d.name;
    for (const XmlAttribute& a : d.attributes) {
      out += ' ';
      out += a.name;
      out += "=\"";
      appendEscaped(out, a.value, true);
      out += '"';
    }
    if (d.isTextItem.empty()) {
      out += "/>";
      if (format) out += '\n';
      return;
    }
    out += '>';
    if (format && !d.children.empty()) out += '\n';
    stack.push_back({&d, 0, 0, 0});
  };

  open(root);
  while (!stack.empty()) {
    Frame& f = stack.back();
    const Data& d = *f.node;
    const bool lines = format && !d.children.empty();
    if (f.item == d.isTextItem.size()) {
      if (lines) out.append(stack.size() - 1, '\t');
      out += "</";
      out += d.name;
      out += '>';
      stack.pop_back();
      if (format) out += '\n';
      continue;
    }
    const bool afterText = f.item > 0 && d.isTextItem[f.item - 1];
    if (d.isTextItem[f.item++]) {
      const std::string& t = d.texts[f.text++];
      if (lines) out.append(stack.size(), '\t');
      if (afterText) out += "<!---->";
      if (t.empty()) out += "<![CDATA[]]>";
      appendEscaped(out, t, false);
      if (lines) out += '\n';
    } else {
      const Data& c = *d.children[f.child++];
      open(c);  // may reallocate the stack: f is not used after this
    }
  }
}

std::string XmlNode::createXMLString(bool format) const {
  std::string out;
  if (data_) writeElement(*data_, format, out);
  return out;
}

int XmlNode::writeToFile(const std::string& path, XmlCharEncoding encoding, bool format) const {
  const char* word = encoding == XmlCharEncoding::UTF8       ? "utf-8"
                     : encoding == XmlCharEncoding::ShiftJIS ? "SHIFT-JIS"
                                                             : "ISO-8859-1";
  const std::string text =
      std::string("<?xml version=\"1.0\" encoding=\"") + word + "\"?>\n" + createXMLString(format);
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) return eXMLErrorCannotOpenWriteFile;
  bool ok = std::fwrite(text.data(), 1, text.size(), f) == text.size();
  ok = std::fclose(f) == 0 && ok;  // a full disk may show only when the buffer is flushed
  return ok ? eXMLErrorNone : eXMLErrorCannotWriteFile;
}

// ---------------------------------------------------------------------------------------------
// Base64

// Decoding stops at the first padding character or at byte 0. A length (white space not
// counted) that is not a multiple of 4 is error 17 and the bytes of a trailing group of two or
// three sextets are still given; with a proper length, a group cut short by padding (fewer than
// two sextets before it, data after it, or a group of padding only) is error 19 and the bytes
// before it are given. An illegal byte is error 18 and gives nothing.
std::vector<unsigned char> XmlNode::decodeBase64(const std::string& text, int* error) {
  std::vector<unsigned char> out;
  out.reserve(text.size() / 4 * 3 + 3);
  unsigned group[4] = {0, 0, 0, 0};
  int filled = 0;
  std::size_t significant = 0;
  bool padded = false, truncated = false;

  auto flushPartial = [&]() {
    if (filled >= 2) out.push_back(static_cast<unsigned char>((group[0] << 2) | (group[1] >> 4)));
    if (filled >= 3) out.push_back(static_cast<unsigned char>((group[1] << 4) | (group[2] >> 2)));
    if (filled == 1) truncated = true;
    filled = 0;
  };

  for (const char ch : text) {
    const unsigned char v = kBase64Table[static_cast<unsigned char>(ch)];
    if (v == kB64End) break;
    if (v == kB64White) continue;
    if (v == kB64Illegal) {
      if (error) *error = eXMLErrorBase64DecodeIllegalCharacter;
      return {};
    }
    ++significant;
    if (v == kB64Pad) {
      if (!padded) {
        padded = true;
        if (filled == 0) truncated = true;
        flushPartial();
      }
      continue;
    }
    if (padded) {
      truncated = true;
      continue;
    }
    group[filled++] = v;
    if (filled == 4) {
      out.push_back(static_cast<unsigned char>((group[0] << 2) | (group[1] >> 4)));
      out.push_back(static_cast<unsigned char>((group[1] << 4) | (group[2] >> 2)));
      out.push_back(static_cast<unsigned char>((group[2] << 6) | group[3]));
      filled = 0;
    }
  }
  if (!padded) flushPartial();

  int code = eXMLErrorNone;
  if (significant % 4 != 0) code = eXMLErrorBase64DataSizeIsNotMultipleOf4;
  else if (truncated) code = eXMLErrorBase64DecodeTruncatedData;
  if (error) *error = code;
  return out;
}

}  // namespace gridmoor
