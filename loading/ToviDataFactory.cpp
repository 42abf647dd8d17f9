#include "loading/ToviDataFactory.h"

#include "document/ToviData.h"

std::unique_ptr<ToviData> ToviDataFactory::Create(ToviHostDocument* hostDocument,
                                                  const QString& path, PhotoXMLType type,
                                                  ToviLoadCallback callback, void* arg) {
    srcPath = path;
    xmlType = type;
    std::unique_ptr<ToviData> made = OnNewDocumentInstance(hostDocument);
    document = made.get();
    if (!made) {
        return nullptr;
    }
    if (made->GetErrorType() != ReadErrNone) {
        return made;  // nothing was read; the error type tells the host why
    }
    if (async) {
        return made;
    }
    bool loaded = false;
    try {
        loaded = OnLoad(callback, arg);
    } catch (...) {
        document = nullptr;
        throw;
    }
    if (!loaded) {
        document = nullptr;
        return nullptr;
    }
    return made;
}

bool ToviDataFactory::Load(ToviLoadCallback callback, void* arg) {
    if (!async || !document) {
        return false;
    }
    return OnLoad(callback, arg);
}

std::unique_ptr<ToviData> ToviDataFactory::OnNewDocumentInstance(
    ToviHostDocument* hostDocument) {
    // The base never sees a delivery: empty path and family 0 on purpose.
    return std::make_unique<ToviData>(hostDocument, QString(), PhotoXMLMlit);
}

bool ToviDataFactory::OnLoad(ToviLoadCallback callback, void* arg) {
    if (!document) {
        return false;
    }
    return OnProgress(callback, QString(), arg);
}

bool ToviDataFactory::OnProgress(ToviLoadCallback callback, const QString& text, void* arg) {
    if (!callback) {
        return false;
    }
    return callback(this, document, text, arg);
}
