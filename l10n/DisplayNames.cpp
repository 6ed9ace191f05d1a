#include "l10n/DisplayNames.h"

#include <libexslt/exslt.h>
#include <libxml/parser.h>
#include <libxslt/security.h>
#include <libxslt/transform.h>
#include <libxslt/xslt.h>
#include <libxslt/xsltInternals.h>
#include <libxslt/xsltutils.h>

#include <climits>
#include <cstdarg>
#include <map>
#include <memory>
#include <mutex>

#include "orvmysql/Error.h"

namespace orvmysql::detail {

namespace {

struct DocFree {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
struct StylesheetFree {
  void operator()(xsltStylesheet* style) const { xsltFreeStylesheet(style); }
};
struct ContextFree {
  void operator()(xsltTransformContext* ctxt) const { xsltFreeTransformContext(ctxt); }
};
using DocPtr = std::unique_ptr<xmlDoc, DocFree>;

// Collects what libxml2 and libxslt report while it is alive, instead of
// letting them print to the standard error stream. The libxml2 handlers are
// the calling thread's own; libxslt's generic handler is global, so only the
// stylesheet compiler (which runs under a lock) replaces it.
class XmlMessages {
 public:
  explicit XmlMessages(bool with_xslt = false) : with_xslt_(with_xslt) {
    generic_ = xmlGenericError;
    generic_context_ = xmlGenericErrorContext;
    structured_ = xmlStructuredError;
    structured_context_ = xmlStructuredErrorContext;
    xmlSetGenericErrorFunc(this, &XmlMessages::Generic);
    xmlSetStructuredErrorFunc(this, &XmlMessages::Structured);
    if (with_xslt_) {
      xslt_ = xsltGenericError;
      xslt_context_ = xsltGenericErrorContext;
      xsltSetGenericErrorFunc(this, &XmlMessages::Generic);
    }
  }
  ~XmlMessages() {
    xmlSetGenericErrorFunc(generic_context_, generic_);
    xmlSetStructuredErrorFunc(structured_context_, structured_);
    if (with_xslt_) xsltSetGenericErrorFunc(xslt_context_, xslt_);
  }
  XmlMessages(const XmlMessages&) = delete;
  XmlMessages& operator=(const XmlMessages&) = delete;

  // What was reported, on one line; `fallback` when nothing was.
  std::string Text(std::string_view fallback) const {
    std::string text;
    for (char c : text_) {
      const char flat = (c == '\n' || c == '\r') ? ' ' : c;
      if (!(flat == ' ' && (text.empty() || text.back() == ' '))) text += flat;
    }
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text.empty() ? std::string(fallback) : text;
  }

  static void Generic(void* context, const char* format, ...) {
    char buffer[1024];
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    static_cast<XmlMessages*>(context)->text_ += buffer;
  }

  static void Structured(void* context, xmlError* error) {
    auto* self = static_cast<XmlMessages*>(context);
    if (error == nullptr || error->message == nullptr) return;
    if (!self->text_.empty()) self->text_ += "; ";
    self->text_ += error->message;
    if (error->line > 0) {
      while (!self->text_.empty() && self->text_.back() == '\n') self->text_.pop_back();
      self->text_ +=
          " (line " + std::to_string(error->line) + ", column " + std::to_string(error->int2) + ")";
    }
  }

 private:
  bool with_xslt_;
  xmlGenericErrorFunc generic_;
  void* generic_context_;
  xmlStructuredErrorFunc structured_;
  void* structured_context_;
  xmlGenericErrorFunc xslt_ = nullptr;
  void* xslt_context_ = nullptr;
  std::string text_;
};

// Transforms may not write files, create directories or use the network.
xsltSecurityPrefs* TransformSecurity() {
  static xsltSecurityPrefs* const prefs = [] {
    xmlInitParser();
    xsltInit();
    exsltRegisterAll();
    xsltSecurityPrefs* p = xsltNewSecurityPrefs();
    xsltSetSecurityPrefs(p, XSLT_SECPREF_WRITE_FILE, xsltSecurityForbid);
    xsltSetSecurityPrefs(p, XSLT_SECPREF_CREATE_DIRECTORY, xsltSecurityForbid);
    xsltSetSecurityPrefs(p, XSLT_SECPREF_READ_NETWORK, xsltSecurityForbid);
    xsltSetSecurityPrefs(p, XSLT_SECPREF_WRITE_NETWORK, xsltSecurityForbid);
    return p;
  }();
  return prefs;
}

struct Compiled {
  std::unique_ptr<xsltStylesheet, StylesheetFree> style;
  std::string problem;
};

std::mutex g_mutex;

std::shared_ptr<const Compiled> CompiledAt(const std::string& path) {
  TransformSecurity();
  std::lock_guard lock(g_mutex);
  static std::map<std::string, std::shared_ptr<const Compiled>> compiled;
  auto found = compiled.find(path);
  if (found != compiled.end()) return found->second;
  auto entry = std::make_shared<Compiled>();
  XmlMessages messages(true);
  entry->style.reset(xsltParseStylesheetFile(reinterpret_cast<const xmlChar*>(path.c_str())));
  if (!entry->style) {
    entry->problem =
        "display-name stylesheet '" + path + "': " + messages.Text("cannot be read or compiled");
  }
  return compiled.emplace(path, std::move(entry)).first->second;
}

}  // namespace

std::string ApplyStylesheet(const std::string& path, std::string_view xml) {
  const std::shared_ptr<const Compiled> compiled = CompiledAt(path);
  if (!compiled->style) ThrowRuntimeError(kErrInvalidCall, compiled->problem);
  if (xml.size() > static_cast<std::size_t>(INT_MAX)) {
    ThrowRuntimeError(kErrInvalidCall, "document: too large to transform");
  }

  XmlMessages messages;
  DocPtr doc(
      xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr, XML_PARSE_NONET));
  if (!doc) {
    ThrowRuntimeError(kErrInvalidCall,
                      "document: not well-formed XML: " + messages.Text("cannot be parsed"));
  }
  std::unique_ptr<xsltTransformContext, ContextFree> ctxt(
      xsltNewTransformContext(compiled->style.get(), doc.get()));
  if (!ctxt) ThrowRuntimeError(kErrOutOfMemory);
  xsltSetTransformErrorFunc(ctxt.get(), &messages, &XmlMessages::Generic);
  xsltSetCtxtSecurityPrefs(TransformSecurity(), ctxt.get());
  DocPtr result(xsltApplyStylesheetUser(compiled->style.get(), doc.get(), nullptr, nullptr, nullptr,
                                        ctxt.get()));
  if (!result || ctxt->state != XSLT_STATE_OK) {
    ThrowRuntimeError(kErrInvalidCall, "display-name stylesheet '" + path +
                                           "' failed: " + messages.Text("no result"));
  }
  xmlChar* text = nullptr;
  int length = 0;
  if (xsltSaveResultToString(&text, &length, result.get(), compiled->style.get()) != 0) {
    ThrowRuntimeError(kErrOutOfMemory);
  }
  std::string out(reinterpret_cast<const char*>(text), text != nullptr ? length : 0);
  xmlFree(text);
  return out;
}

}  // namespace orvmysql::detail
