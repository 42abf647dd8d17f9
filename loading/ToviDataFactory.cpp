#include "loading/ToviDataFactory.h"

#include "document/ToviData.h"

ToviData* ToviDataFactory::Create(ToviHostDocument* hostDocument, const QString& path,
                                  PhotoXMLType type, ToviLoadCallback callback, void* arg) {
    srcPath = path;
    xmlType = type;
    document = OnNewDocumentInstance(hostDocument);
    if (!document) {
        return nullptr;
    }
    if (document->GetErrorType() != ReadErrNone) {
        return document;  // nothing was read; the error type tells the host why
    }
    if (async) {
        return document;
    }
    if (OnLoad(callback, arg)) {
        return document;
    }
    delete document;
    document = nullptr;
    return nullptr;
}

bool ToviDataFactory::Load(ToviLoadCallback callback, void* arg) {
    if (!async || !document) {
        return false;
    }
    return OnLoad(callback, arg);
}

ToviData* ToviDataFactory::OnNewDocumentInstance(ToviHostDocument* hostDocument) {
    // The base never sees a delivery: empty path and family 0 on purpose.
    return new ToviData(hostDocument, QString(), PhotoXMLMlit);
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
