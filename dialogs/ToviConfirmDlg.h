#pragma once

#include "panels/ToviPanelWindows.h"

#include <QDialog>
#include <QList>
#include <QPixmap>

class QPushButton;
class QTreeWidgetItem;
class ToviConfirmTreeCtrl;
class ToviData;
class ToviMpiPanel;
class ToviNode;
class ToviPhoto;

// 写真格納位置の確認: the classification tree of the whole delivery, wide open, with the
// selected photograph's place marked. Modeless and read-only; the multi-photo panel owns it,
// moves the mark as its selection moves, and keeps its place and size between openings.
class ToviConfirmDlg : public QDialog, public ToviConfirmView {
    Q_OBJECT
public:
    static constexpr int kNoTreeType = 3;

    // A dialog with an owner tells it when it goes (EndConfirmDlg).
    explicit ToviConfirmDlg(ToviMpiPanel* owner, QWidget* parent = nullptr);
    ~ToviConfirmDlg() override;

    bool IsTreeType(int type) const override { return treeType == type; }
    void SetTreeType(int type) override { treeType = type; }
    void BuildTree(ToviData* data) override;
    bool OnSelect(ToviData* data, ToviPhoto* photo) override;
    // The place and size kept at the last close (position of the frame, size of the client).
    QRect StoredRect() const override { return QRect(x, y, width, height); }
    QWidget* Window() override { return this; }
    ToviConfirmTreeCtrl* Tree() const { return tree; }

protected:
    virtual QTreeWidgetItem* InsertNode(ToviNode* node, QTreeWidgetItem* parent, int level,
                                        int selectedImage);
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void SetImages(QTreeWidgetItem* item, int image, int selectedImage) const;
    QTreeWidgetItem* FindItem(ToviData* data, const ToviPhoto* photo) const;
    void StoreRect();

    QPushButton* closeButton;
    ToviConfirmTreeCtrl* tree;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    QList<QPixmap> images;
    ToviMpiPanel* owner;
    int treeType = kNoTreeType;
};
