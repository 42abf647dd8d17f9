#pragma once

#include "document/ToviHostDocument.h"
#include "document/ToviItemDef.h"
#include "panels/ToviPanel.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>
#include <vector>

class QWidget;
class ToviData;
class ToviEnouDataFactory;

// The viewer's side of a delivery: owns the open document and the factory that made it,
// forwards every update hint to every panel, and runs the start and stop of a delivery.
// Everything it has to tell the user goes through the installed ToviUi.
class ToviViewerDocument : public QObject, public ToviHostDocument {
    Q_OBJECT

public:
    enum OpenResult { Opened, Cancelled, Failed };

    explicit ToviViewerDocument(QObject* parent = nullptr);
    ~ToviViewerDocument() override;

    // Panels stay registered until removed; they are attached while a delivery is open.
    void AddPanel(ToviPanel* panel);
    void RemovePanel(ToviPanel* panel);

    // Every registered panel but sender, in the order they were added.
    void UpdateAllViews(QWidget* sender, int hint, QObject* object) override;

    // The folder holding PHOTO.XML for folder: itself, else its child PHOTO (a delivery's
    // top with INDEX_*.XML), in any letter case. Empty when neither holds one.
    static QString PhotoFolderOf(const QString& folder);

    // Reads the delivery under progress owned by window, and only once it has been read
    // closes the one open now and shows the new one. A delivery that can't be shown leaves
    // the open one as it was, after one message saying why.
    OpenResult Open(const QString& folder, PhotoXMLType family, QWidget* window);
    // Lets the panels go, drops the document (its settings write themselves back) and
    // removes the work area of a combine. Asks nothing: the window asks about saving first.
    void Close(QWidget* window = nullptr);

    ToviData* Data() const { return data.get(); }
    bool IsOpen() const { return data != nullptr; }
    // The folder the delivery was opened from (before any combine copy).
    const QString& Folder() const { return folder; }
    PhotoXMLType Family() const { return family; }

signals:
    void DeliveryOpened();
    void DeliveryClosed();

private:
    void Tell(QWidget* window, const QString& text, int icon) const;

    // Guarded: a panel destroyed while registered is passed over.
    std::vector<QPointer<ToviPanel>> panels;
    std::unique_ptr<ToviEnouDataFactory> factory;
    std::unique_ptr<ToviData> data;
    QString folder;
    PhotoXMLType family = PhotoXMLMlit;
    bool ownsWorkArea = false;  // the combine of this delivery made the work area
};
