#pragma once

#include "document/ToviItemDef.h"

#include <QString>

#include <memory>

class ToviData;
class ToviDataFactory;
class ToviHostDocument;

// The host's progress callback during a load; its answer is ignored by the delivery reader
// (a load can't be cancelled). It must not touch the document.
using ToviLoadCallback = bool (*)(const ToviDataFactory* factory, const ToviData* document,
                                  const QString& text, void* arg);

// The way in: builds one document for a folder and loads it. This base makes an empty
// document and loads nothing of its own; ToviEnouDataFactory reads deliveries.
class ToviDataFactory {
public:
    ToviDataFactory() = default;
    virtual ~ToviDataFactory() = default;
    ToviDataFactory(const ToviDataFactory&) = delete;
    ToviDataFactory& operator=(const ToviDataFactory&) = delete;

    // The document, or null when the load failed. A document whose error type isn't
    // ReadErrNone holds no photographs. In async mode the factory keeps watching the document
    // it handed over until Load; the caller keeps it alive until then. A load that throws
    // (an unbalanced READITEM.XML) lets the exception through and keeps no document.
    std::unique_ptr<ToviData> Create(ToviHostDocument* hostDocument, const QString& path, PhotoXMLType type,
                                     ToviLoadCallback callback = nullptr, void* arg = nullptr);
    void Async(bool on) { async = on; }
    bool Async() const { return async; }
    // The second half of an asynchronous open; false unless in async mode with a document.
    bool Load(ToviLoadCallback callback, void* arg);
    virtual const char* GetInfoPath() const { return nullptr; }

protected:
    ToviData* GetDocument() const { return document; }
    const QString& SrcPath() const { return srcPath; }
    PhotoXMLType XmlType() const { return xmlType; }
    virtual std::unique_ptr<ToviData> OnNewDocumentInstance(ToviHostDocument* hostDocument);
    virtual bool OnLoad(ToviLoadCallback callback, void* arg);
    // Hands text to the callback; false without one.
    virtual bool OnProgress(ToviLoadCallback callback, const QString& text, void* arg);

private:
    ToviData* document = nullptr;  // the document being loaded; owned by the caller
    QString srcPath;
    bool async = false;
    PhotoXMLType xmlType = PhotoXMLMlit;
};

// Four texts the host keeps beside a delivery; it reads and writes no file.
class ToviInfoTxtManager {
public:
    explicit ToviInfoTxtManager(const QString& infoPath = QString()) : infoPath(infoPath) {}
    // An empty argument leaves the path unchanged.
    void SetInfoPath(const QString& path) {
        if (!path.isEmpty()) {
            infoPath = path;
        }
    }
    void SetTitle(const QString& left, const QString& center, const QString& right) {
        leftTitle = left;
        centerTitle = center;
        rightTitle = right;
    }
    const QString& GetInfoPath() const { return infoPath; }
    const QString& GetLeftTitle() const { return leftTitle; }
    const QString& GetCenterTitle() const { return centerTitle; }
    const QString& GetRightTitle() const { return rightTitle; }

private:
    QString infoPath;
    QString leftTitle;
    QString centerTitle;
    QString rightTitle;
};
