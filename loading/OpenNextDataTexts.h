#pragma once

#include <QString>

// The texts of the media combine: the dialog that asks for the next disc (次のデータを開く) and
// the wait windows around the copy, shared by the model, which hands them to whoever draws
// them, and the viewer's windows themselves.
namespace OpenNextDataTexts {

inline QString DialogName() {
    return QStringLiteral("OpenNextDataDlg");
}
inline QString Title() {
    return QStringLiteral("次のデータを開く");
}
inline QString Message() {
    return QStringLiteral(
        "次のCDに入れ替えアクセスランプの消灯を待って『OK』ボタンを押してください。\n"
        "（HDDからデータを読み込む場合は、次の電子納品成果（PHOTO.XMLがあるフォルダ）を\n"
        "　指定し『OK』ボタンを押してください。）\n\n"
        "このまま『キャンセル』ボタンを押した場合、\n"
        "『リンクが切れているファイル』リスト内にあるファイルは正常に表示されません。");
}
inline QString Prompt() {
    return QStringLiteral("PHOTO.XMLがあるフォルダを指定してください。");
}
inline QString FolderLabel() {
    return QStringLiteral("フォルダ：");
}
inline QString BrowseButton() {
    return QStringLiteral("参照...");
}
inline QString BrowseTitle() {
    return QStringLiteral("フォルダの選択");
}
inline QString ListLabel(int count) {
    return QStringLiteral("リンクが切れているファイル　（ファイル数：%1）").arg(count);
}
inline QString NoPhotoXml() {
    return QStringLiteral(
        "指定したフォルダ内にPHOTO.XMLファイルが存在しません。\n再度、フォルダの指定を行ってください"
        "。");
}
// The dialog's fields: in, the message, the folder given last, the list's label and the
// missing file names (a string list); out, the folder chosen.
inline QString MessageField() {
    return QStringLiteral("message");
}
inline QString FolderField() {
    return QStringLiteral("folder");
}
inline QString ListLabelField() {
    return QStringLiteral("listLabel");
}
inline QString MissingField() {
    return QStringLiteral("missing");
}

// The wait windows: their animation and text.
constexpr int kCopyAnimation = 1;
constexpr int kDeleteAnimation = 3;
inline QString Copying() {
    return QStringLiteral("写真・参考図 のコピー中...");
}
inline QString Deleting() {
    return QStringLiteral("作業領域のデータの削除中...");
}

// The outcomes.
inline QString BadFolder() {
    return QStringLiteral("不正なフォルダパスです。再度パスの指定を行ってください。");
}
inline QString CopyFailed() {
    return QStringLiteral(
        "写真データの取込（コピー）に失敗しました。\nメディア単位での閲覧を行ってください。");
}
inline QString Complete() {
    return QStringLiteral(
        "写真データの取込（コピー）が完了しました。\n『QV-フォトビューア』での閲覧を開始します。");
}

}  // namespace OpenNextDataTexts
