#pragma once

#include <QDate>
#include <QImage>
#include <QSize>
#include <QString>

// Pictures for generated deliveries: a site photograph in flat colours with the blackboard
// (黒板) that Japanese site photographs carry, and a reference drawing as a line drawing.
// Both draw text, so they need a QGuiApplication.

// What the work in the picture looks like.
enum class FixtureScene { Wall, Earth, Box, Layers, Rail, Slope };

struct BoardContent {
    QString workName;  // 工事名
    QString kousyu;    // 工種; empty leaves the row blank, as on a real board
    QString syubetsu;  // 種別
    QString place;     // 撮影箇所
    QString title;     // 写真タイトル
    QDate date;
    FixtureScene scene = FixtureScene::Wall;
    bool river = false;  // water in the background rather than a road
    quint64 seed = 0;    // small variations: board corner, cones
};

// The site photograph, upright, of the given size.
QImage DrawSitePhoto(const BoardContent& board, QSize size);
// A cross-section of the scene's structure with dimension lines and a title block.
QImage DrawReferenceDrawing(FixtureScene scene, const QString& title, QSize size);
