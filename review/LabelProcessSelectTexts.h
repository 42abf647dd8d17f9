#pragma once

#include <QString>
#include <QStringList>

// The texts of the batch label correction dialog (付箋の一括訂正・削除), shared by the model,
// which hands them to whoever draws the dialog, and the viewer's dialog itself.
namespace LabelProcessSelectTexts {

inline QString DialogName() {
    return QStringLiteral("LabelProcessSelectDlg");
}
inline QString Title() {
    return QStringLiteral("付箋の一括訂正・削除");
}
inline QStringList Lead() {
    return {QStringLiteral("選択したツリー以下にある全ての写真に対して、下記の処理を行います。"),
            QStringLiteral("※　抽出状態の場合は、抽出写真に対してのみ処理を行います。")};
}
// The three actions, in the order of their numbers.
inline QStringList Choices() {
    return {QStringLiteral("OK付箋を貼る。"),
            QStringLiteral("OK・NG付箋を削除し未検査状態にする。"),
            QStringLiteral("全ての付箋を削除する。")};
}
inline QStringList Explanations() {
    return {QStringLiteral("NG付箋の貼られていない全ての写真に対しOK付箋を貼ります。"),
            QStringLiteral("OK、NGの付箋を削除します。"),
            QStringLiteral(
                "OK、NG、任意設定の付箋全てを削除します。\nまた、コメントのクリアも行います。")};
}
inline QString Confirmation() {
    return QStringLiteral("付箋の一括訂正・削除処理を実行します。よろしいですか？");
}

}  // namespace LabelProcessSelectTexts
