#include "platform/MibXslt.h"

#include "platform/MibFile.h"

#include <QFile>

#include <libxml/parser.h>
#include <libxslt/security.h>
#include <libxslt/transform.h>
#include <libxslt/xsltInternals.h>
#include <libxslt/xsltutils.h>

#include <memory>

namespace {

struct DocFree {
    void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
struct StylesheetFree {
    void operator()(xsltStylesheet* sheet) const { xsltFreeStylesheet(sheet); }
};
struct SecurityFree {
    void operator()(xsltSecurityPrefs* prefs) const { xsltFreeSecurityPrefs(prefs); }
};
struct ContextFree {
    void operator()(xsltTransformContext* context) const { xsltFreeTransformContext(context); }
};

bool Fail(QString* error, const QString& text) {
    if (error) {
        *error = text;
    }
    return false;
}

// Parse errors go to the caller's one line, not to standard error.
void Quiet(void*, const char*, ...) {}

// Reads a regular file whole; libxml2 then parses from memory, so that nothing but these two
// files is opened.
bool ReadFile(const QString& path, QByteArray& data) {
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        return false;
    }
    data = file.readAll();
    return true;
}

}  // namespace

bool MibTransformXslt(const QString& xmlPath, const QString& stylesheetPath, QByteArray& html,
                      QString* error) {
    html.clear();
    QByteArray xml;
    QByteArray xsl;
    if (!ReadFile(xmlPath, xml)) {
        return Fail(error, QStringLiteral("%1 を読めません").arg(xmlPath));
    }
    if (!ReadFile(stylesheetPath, xsl)) {
        return Fail(error, QStringLiteral("スタイルシート %1 を読めません").arg(stylesheetPath));
    }
    xmlSetGenericErrorFunc(nullptr, Quiet);
    xsltSetGenericErrorFunc(nullptr, Quiet);
    constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    std::unique_ptr<xmlDoc, DocFree> styleDoc(xmlReadMemory(
        xsl.constData(), static_cast<int>(xsl.size()), nullptr, nullptr, kOptions));
    if (!styleDoc) {
        return Fail(error, QStringLiteral("スタイルシート %1 が XML として読めません").arg(stylesheetPath));
    }
    std::unique_ptr<xsltStylesheet, StylesheetFree> sheet(xsltParseStylesheetDoc(styleDoc.get()));
    if (!sheet) {
        return Fail(error, QStringLiteral("スタイルシート %1 が正しくありません").arg(stylesheetPath));
    }
    styleDoc.release();  // the stylesheet owns it now
    std::unique_ptr<xmlDoc, DocFree> doc(xmlReadMemory(xml.constData(), static_cast<int>(xml.size()),
                                                       nullptr, nullptr, kOptions));
    if (!doc) {
        return Fail(error, QStringLiteral("%1 が XML として読めません").arg(xmlPath));
    }
    std::unique_ptr<xsltSecurityPrefs, SecurityFree> prefs(xsltNewSecurityPrefs());
    for (xsltSecurityOption option : {XSLT_SECPREF_READ_FILE, XSLT_SECPREF_WRITE_FILE,
                                      XSLT_SECPREF_CREATE_DIRECTORY, XSLT_SECPREF_READ_NETWORK,
                                      XSLT_SECPREF_WRITE_NETWORK}) {
        xsltSetSecurityPrefs(prefs.get(), option, xsltSecurityForbid);
    }
    std::unique_ptr<xsltTransformContext, ContextFree> context(
        xsltNewTransformContext(sheet.get(), doc.get()));
    if (!context || xsltSetCtxtSecurityPrefs(prefs.get(), context.get()) != 0) {
        return Fail(error, QStringLiteral("変換を始められません"));
    }
    std::unique_ptr<xmlDoc, DocFree> result(
        xsltApplyStylesheetUser(sheet.get(), doc.get(), nullptr, nullptr, nullptr, context.get()));
    if (!result || context->state != XSLT_STATE_OK) {
        return Fail(error, QStringLiteral("%1 を変換できません").arg(xmlPath));
    }
    xmlChar* text = nullptr;
    int length = 0;
    if (xsltSaveResultToString(&text, &length, result.get(), sheet.get()) != 0) {
        return Fail(error, QStringLiteral("変換の結果を書き出せません"));
    }
    html = QByteArray(reinterpret_cast<const char*>(text), length);
    xmlFree(text);
    return true;
}
