#pragma once

// What the user chooses to see. The enumerations here are shared by the document and the
// panels.
class ToviPhotoCtrlVisualSetting {
public:
    // The classification tree: 0 by work type with the photo class above it, 1 by shooting
    // place, 2 by work type alone.
    enum TreeType { TreeKousyu = 0, TreeSatsueikasyo = 1, TreeKousyuOnly = 2 };
    // The caption item of a photograph: 0 file name, 1 Japanese file name, 2 title.
    enum TitleShowType { TitleFileName = 0, TitleJapaneseName = 1, TitlePhotoTitle = 2 };

    virtual ~ToviPhotoCtrlVisualSetting() = default;
};
