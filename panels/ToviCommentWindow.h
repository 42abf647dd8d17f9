#pragma once

#include <QLabel>

// The strip over a photograph that shows its comment: read-only, one line, cut to the width
// with "..." and the whole comment in the tool tip. A double click leads to the comment
// dialog through whoever placed the strip.
class ToviCommentWindow : public QLabel {
    Q_OBJECT
public:
    static constexpr int kHeight = 30;
    static constexpr int kMarginWidth = 8;

    // photoPosition is the position in the current array of the photograph shown.
    ToviCommentWindow(const QString& text, int photoPosition, QWidget* parent = nullptr);

    void SetComment(const QString& text);
    QString Comment() const { return comment; }
    // Shown only when visible and there is a comment.
    void ShowIfAny(bool visible);
    int GetPhotoPosition() const { return photoPosition; }
    // The text as it fits the strip now: behind a full-width blank, whole or cut before the
    // first character that does not fit, then "...". Empty for an empty text or no width.
    QString FitText(const QString& text) const;

signals:
    void Clicked(ToviCommentWindow* window);
    void DoubleClicked(ToviCommentWindow* window);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QString comment;
    int photoPosition;
};
