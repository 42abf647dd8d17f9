#pragma once

#include <QPushButton>
#include <QWidget>

class QLabel;
class ToviLabelManager;

// One label button of the name plate: its label's picture, on when the label is pasted.
class ToviLabelButton : public QPushButton {
    Q_OBJECT
public:
    ToviLabelButton(int label, QWidget* parent);

    int Label() const { return label; }
    bool IsPressed() const { return pressed; }
    void SetPressed(bool on);
    QString LabelName() const { return labelName; }
    void SetLabelName(const QString& name);

private:
    int label;
    bool pressed = false;
    QString labelName;
};

// The bar under a photograph: its title, the six label buttons and two status marks (the
// photograph has reference drawings; the result of the tamper check). Its colours follow
// the selection; a click, double click, right click or key on it is reported to the cell.
class ToviNamePlate : public QWidget {
    Q_OBJECT
public:
    static constexpr int kHeight = 27;
    static QColor PlateColour(bool selected);

    explicit ToviNamePlate(QWidget* parent = nullptr);

    // A null title clears the text and the tool tip; otherwise the text is the title after a
    // blank and the tool tip the whole title.
    void SetTitle(const QString& title);
    QString Title() const { return title; }
    void SetSelected(bool selected);
    bool IsSelected() const { return selected; }
    // True once a photograph is on show: clicks select only then.
    void SetActive(bool on) { active = on; }
    bool IsActive() const { return active; }
    ToviLabelButton* Button(int label) const { return buttons[label]; }
    // The label names as buttons' names and tool tips.
    void ApplyLabelNames(const ToviLabelManager& labels);
    // The comment button's tool tip: the comment, or "コメント未記入".
    void SetCommentTip(const QString& comment);
    void ShowButtons(bool shown);
    // 0 or 1: has reference drawings.
    void SetPhotoStatus(int status);
    // 0 not checked, 1 unaltered, 2 altered.
    void SetCheckStatus(int status);
    int PhotoStatus() const { return photoStatus; }
    int CheckStatus() const { return checkStatus; }

signals:
    void Clicked();
    void DoubleClicked();
    void RightClicked();
    void KeyPressed(int key);
    // A label button was pressed (its picture already flipped).
    void LabelClicked(int label);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void Layout();

    ToviLabelButton* buttons[6];
    QLabel* photoMark;
    QLabel* checkMark;
    QString title;
    bool selected = false;
    bool active = false;
    int photoStatus = 0;
    int checkStatus = 0;
};
