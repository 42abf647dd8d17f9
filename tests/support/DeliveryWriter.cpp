#include "tests/support/DeliveryWriter.h"

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QSaveFile>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numeric>
#include <optional>

#include "platform/Cp932.h"
#include "tests/support/FixturePainter.h"

namespace {

// splitmix64: tiny, and the same sequence on every platform and library version, which the
// standard distributions do not promise.
class Rng {
public:
    explicit Rng(quint64 seed) : state(seed) {}
    quint64 Next() {
        quint64 z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    int Below(int n) { return n <= 1 ? 0 : static_cast<int>(Next() % static_cast<quint64>(n)); }
    int Range(int lo, int hi) { return lo + Below(hi - lo + 1); }
    double Real() { return static_cast<double>(Next() >> 11) * (1.0 / 9007199254740992.0); }
    bool Chance(double p) { return p >= 1.0 || (p > 0.0 && Real() < p); }
    template <typename T, size_t N>
    const T& Pick(const std::array<T, N>& items) {
        return items[static_cast<size_t>(Below(static_cast<int>(N)))];
    }
    // Index into weights, chosen in proportion to them.
    template <size_t N>
    int Weighted(const std::array<int, N>& weights) {
        size_t i = 0;
        for (int r = Below(std::accumulate(weights.begin(), weights.end(), 0)); r >= weights[i];) {
            r -= weights[i++];
        }
        return static_cast<int>(i);
    }

private:
    quint64 state;
};

quint64 SubSeed(quint32 seed, int index, quint64 salt) {
    Rng mix(static_cast<quint64>(seed) * 0x100000001B3ull ^ (static_cast<quint64>(index) << 20) ^
            salt);
    return mix.Next();
}

// The element trees differ by these shapes; the generations map onto them.
enum class Shape { Flat11, S02, S03, S04, S05 };

// In the order of Generation.
struct GenerationInfo {
    const char* section;
    const char* ascii;
    const char* dtd;
    const char* dtdVersion;
    int family;
    Shape shape;
    const char* standard;  // 適用要領基準
    int year;              // the year the photographs are dated in
    const char* indexDtd;
};

const std::array<GenerationInfo, 11> kGenerations = {{
    {"国交省-11", "mlit-11", "PHOTO.DTD", "1.00", 0, Shape::Flat11, "土木199908-01", 2000,
     "INDE_C01.DTD"},
    {"国交省-14", "mlit-14", "PHOTO02.DTD", "02", 0, Shape::S02, "土木200207-01", 2003,
     "INDE_C02.DTD"},
    {"国交省-16", "mlit-16", "PHOTO03.DTD", "03", 0, Shape::S03, "土木200406-01", 2005,
     "INDE_C03.DTD"},
    {"国交省-18", "mlit-18", "PHOTO04.DTD", "04", 0, Shape::S04, "土木200601-01", 2007,
     "INDE_C03.DTD"},
    {"国交省-20", "mlit-20", "PHOTO05.DTD", "05", 0, Shape::S05, "土木202303-01", 2023,
     "INDE_C05.DTD"},
    {"農水省-15", "maff-15", "PHOTO02N.DTD", "02", 2, Shape::S02, "農業土木200303-01", 2004,
     "INDE_C02.DTD"},
    {"農水省-17", "maff-17", "PHOTO03.DTD", "03", 2, Shape::S03, "農業土木200504-01", 2006,
     "INDE_C03.DTD"},
    {"農水省-23", "maff-23", "PHOTO05.DTD", "05", 2, Shape::S05, "農業土木201104-01", 2013,
     "INDE_C04.DTD"},
    {"NEXCO-14", "nexco-14", "PHOTO02.DTD", "02", 3, Shape::S02, "JH200204-01", 2004,
     "INDE_C02.DTD"},
    {"NEXCO-18", "nexco-18", "PHOTO03.DTD", "03", 3, Shape::S04, "NEXCO200607-01", 2008,
     "INDE_C03.DTD"},
    {"NEXCO-24", "nexco-24", "PHOTO04.DTD", "04", 3, Shape::S05, "NEXCO201207-01", 2014,
     "INDE_C04.DTD"},
}};

const GenerationInfo& Info(Generation generation) {
    return kGenerations[static_cast<size_t>(generation)];
}

struct WorkRow {
    const char* kousyu;    // 工種
    const char* syubetsu;  // 種別
    const char* saibetsu;  // 細別
    FixtureScene scene;
    const char* material;  // what 使用材料写真 of this work show
};

const std::array<WorkRow, 8> kRoadWorks = {{
    {"道路改良", "擁壁工", "場所打擁壁工", FixtureScene::Wall, "生コンクリート 18-8-40BB"},
    {"道路改良", "擁壁工", "プレキャスト擁壁工", FixtureScene::Wall, "プレキャスト擁壁 H=1500"},
    {"道路改良", "道路土工", "掘削工", FixtureScene::Earth, "購入土"},
    {"道路改良", "道路土工", "路体盛土工", FixtureScene::Earth, "購入土"},
    {"道路改良", "排水構造物工", "側溝工", FixtureScene::Box, "U型側溝 300B"},
    {"舗装", "舗装工", "下層路盤工", FixtureScene::Layers, "再生クラッシャラン RC-40"},
    {"舗装", "舗装工", "表層工", FixtureScene::Layers, "再生密粒度アスコン 13"},
    {"付属施設", "防護柵工", "ガードレール設置工", FixtureScene::Rail, "ガードレール Gr-C-4E"},
}};

const std::array<WorkRow, 8> kRiverWorks = {{
    {"河川改修", "護岸工", "ブロック積工", FixtureScene::Slope, "積ブロック 控35"},
    {"河川改修", "護岸工", "根固めブロック工", FixtureScene::Slope, "根固めブロック 2t型"},
    {"河川改修", "河川土工", "掘削工", FixtureScene::Earth, "発生土"},
    {"河川改修", "河川土工", "盛土工", FixtureScene::Earth, "購入土"},
    {"樋門・樋管", "函渠工", "本体工", FixtureScene::Box, "鉄筋 SD345 D16"},
    {"樋門・樋管", "基礎工", "既製杭工", FixtureScene::Box, "PHC杭 φ450"},
    {"仮設工", "仮締切工", "鋼矢板", FixtureScene::Wall, "鋼矢板 III型"},
    {"仮設工", "工事用道路工", "敷鉄板", FixtureScene::Layers, "敷鉄板 22mm"},
}};

const std::array<const char*, 8> kCategories = {
    "着手前及び完成写真", "施工状況写真",   "安全管理写真", "使用材料写真",
    "品質管理写真",       "出来形管理写真", "災害写真",     "その他"};
const std::array<int, 8> kCategoryWeights = {8, 35, 10, 10, 12, 18, 2, 5};

const std::array<const char*, 6> kWorkActions = {"施工状況",     "敷均し状況", "転圧状況",
                                                 "型枠組立状況", "打設状況",   "据付状況"};
const std::array<const char*, 5> kMeasures = {"幅", "高さ", "厚さ", "延長", "基準高"};
const std::array<const char*, 4> kTests = {"現場密度試験", "スランプ試験", "空気量試験",
                                           "圧縮強度試験供試体作成"};
const std::array<const char*, 4> kSafety = {"安全訓練実施状況", "KY活動状況", "保安施設設置状況",
                                            "新規入場者教育"};
const std::array<const char*, 3> kSurveyTitles = {"基準点設置状況", "丁張設置状況", "水準測量状況"};
const std::array<const char*, 3> kStudyTitles = {"土質調査状況", "既設構造物調査", "試掘調査状況"};
const std::array<const char*, 4> kExplanations = {
    "型枠の組立状況を確認した。", "設計寸法を満足していることを確認した。",
    "降雨のため養生シートで保護した。", "材料の規格証明書と照合した。"};
const std::array<const char*, 4> kKubunSpares = {"第1工区", "第2工区", "夜間施工", "検査対象"};
const std::array<const char*, 4> kDrawingSpares = {"縮尺 1/50", "図面番号 12", "出典 設計図書",
                                                   "変更後"};
const std::array<const char*, 4> kDrawingKinds = {"標準断面図", "構造図", "展開図", "配筋図"};

struct Camera {
    const char* make;
    const char* model;
    const char* software;
};
const std::array<Camera, 3> kCameras = {{
    {"ORVANE", "FIELD-CAM G7", "FIELD-CAM FW 1.02"},
    {"ORVANE", "FIELD-CAM G5", ""},
    {"KESTREL", "KS-200 WG", "KS-200 Ver.2.10"},
}};

QString Text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

QString EraYear(int year) {
    return year >= 2019 ? QStringLiteral("令和%1年度").arg(year - 2018)
                        : QStringLiteral("平成%1年度").arg(year - 1988);
}

struct DrawingPlan {
    QString fileName;
    QString japaneseName;
    QString title;
    QStringList spares;
    FixtureScene scene = FixtureScene::Wall;
};

// The values of one photograph; an empty optional is an element left out.
struct PhotoPlan {
    int serial = 0;
    QString fileName;
    std::optional<QString> japaneseName;
    std::optional<QString> major;  // 写真-大分類
    std::optional<QString> category;
    std::optional<QString> kousyu, syubetsu, saibetsu;
    QString title;
    QStringList kubunSpares;
    QList<DrawingPlan> drawings;
    std::optional<QString> place;
    QDate date;
    bool dateWritten = true;
    QString representative;
    std::optional<QString> submission;
    std::optional<QString> controlValue;
    std::optional<QString> explanation;
    std::optional<QString> seiriFlag;  // the H11 generation only
    const WorkRow* work = nullptr;
};

struct DeliveryPlan {
    const GenerationInfo* info = nullptr;
    bool river = false;
    QString workName;
    QString orderer, ordererCode, office;
    QString contractor, contractorCode;
    QDate start, end;
    QStringList places;
    double siteLatitude = 35.0, siteLongitude = 139.0;
};

DeliveryPlan PlanDelivery(const DeliveryOptions& options) {
    DeliveryPlan plan;
    plan.info = &Info(options.generation);
    Rng rng(SubSeed(options.seed, 0, 0xD311));
    plan.river = rng.Chance(0.5);
    const int year = plan.info->year;
    const std::array<const char*, 4> rivers = {"緑川", "朝日川", "白石川", "桜井川"};
    const std::array<int, 4> routes = {17, 123, 246, 401};
    plan.workName =
        plan.river
            ? QStringLiteral("%1 %2護岸改修工事").arg(EraYear(year), Text(rng.Pick(rivers)))
            : QStringLiteral("%1 国道%2号 道路改良工事").arg(EraYear(year)).arg(rng.Pick(routes));
    const int family = plan.info->family;
    plan.orderer = family == 2 ? "農林水産省" : family == 3 ? "高速道路株式会社" : "国土交通省";
    plan.office = family == 2   ? "関東農政局 緑ヶ丘農業水利事業所"
                  : family == 3 ? "緑ヶ丘管理事務所"
                                : "関東地方整備局 緑ヶ丘河川国道事務所";
    plan.ordererCode = QString::number(rng.Range(10000000, 99999999));
    plan.contractor = QStringLiteral("緑川建設株式会社");
    plan.contractorCode = QString::number(rng.Range(100000, 999999));
    plan.start = QDate(year, 5, 1).addDays(rng.Below(60));
    plan.end = plan.start.addDays(180 + rng.Below(120));
    const int firstStation = rng.Range(0, 40);
    for (int k = 0; k < 8; ++k) {
        const std::array<const char*, 4> plus = {"0.0", "5.0", "10.0", "12.5"};
        const char* side =
            plan.river ? (rng.Chance(0.5) ? "左岸" : "右岸") : (rng.Chance(0.5) ? "左側" : "右側");
        plan.places << QStringLiteral("No.%1+%2 %3")
                           .arg(firstStation + 2 * k)
                           .arg(Text(rng.Pick(plus)), Text(side));
    }
    plan.places << (plan.river ? QStringLiteral("起点側 仮設ヤード")
                               : QStringLiteral("終点側 交差点部"));
    plan.siteLatitude = 34.5 + rng.Real() * 2.0;
    plan.siteLongitude = 136.5 + rng.Real() * 3.0;
    return plan;
}

QString Signed(int value) {
    return value > 0 ? QStringLiteral("+%1").arg(value) : QString::number(value);
}

// 施工管理値 as site staff type it: mostly "幅:設計値 500・実測値 505・差 +5" parts joined by
// "、", some in the other spellings the viewer reads (no blank, 設計/実測 alone, 寸法), and some
// that it cannot read and shows as they stand: a full-width colon (a bare name), the standard
// tolerance written first, or numbers without their words.
QString ControlValue(Rng& rng) {
    enum Style { Usual, NoBlank, ShortWords, Dimension, FullWidthColon, ToleranceFirst, Bare };
    const std::array<int, 7> weights = {55, 10, 8, 7, 5, 8, 7};
    const std::array<const char*, 7> patterns = {"{n}:設計値 {d}・実測値 {a}・差 {x}",
                                                 "{n}:設計値{d}・実測値{a}・差{x}",
                                                 "{n}:設計 {d}・実測 {a}",
                                                 "{n}:設計寸法 {d}・実測寸法 {a}・差 {x}",
                                                 "{n}：設計値 {d}・実測値 {a}・差 {x}",
                                                 "{n}:規格値 ±{t}・設計値 {d}・実測値 {a}",
                                                 "{n}:{d}・{a}・{x}"};
    const std::array<int, 6> designs = {300, 500, 1200, 1500, 2000, 3000};
    // The draws on rng are the ones the generator always made, so that every later photograph
    // of a delivery comes out as before; the spelling comes from a generator of its own.
    const int parts = rng.Range(1, 3);
    const int firstMeasure = rng.Below(static_cast<int>(kMeasures.size()));
    std::array<int, 3> design{};
    std::array<int, 3> diff{};
    quint64 mix = static_cast<quint64>(parts * 8 + firstMeasure);
    for (size_t p = 0; p < static_cast<size_t>(parts); ++p) {
        design[p] = rng.Pick(designs);
        diff[p] = rng.Range(-10, 10);
        mix = mix * 131 + static_cast<quint64>(design[p] * 32 + diff[p] + 10);
    }
    Rng spelling(SubSeed(static_cast<quint32>(mix), static_cast<int>(mix >> 32), 0xC0A7));
    const int style = spelling.Weighted(weights);
    // The unreadable spellings spoil one part only; the others keep the usual form.
    const bool spoils = style == ToleranceFirst || style == Bare;
    const int spoiled = spoils ? spelling.Below(parts) : -1;

    QStringList out;
    for (int p = 0; p < parts; ++p) {
        const size_t at = static_cast<size_t>(p);
        const int own = spoils && p != spoiled ? Usual : style;
        const size_t measure = static_cast<size_t>(firstMeasure + p) % kMeasures.size();
        out << Text(patterns[static_cast<size_t>(own)])
                   .replace(QStringLiteral("{n}"), Text(kMeasures[measure]))
                   .replace(QStringLiteral("{d}"), QString::number(design[at]))
                   .replace(QStringLiteral("{a}"), QString::number(design[at] + diff[at]))
                   .replace(QStringLiteral("{x}"), Signed(diff[at]))
                   .replace(QStringLiteral("{t}"), QString::number(10 * spelling.Range(1, 5)));
    }
    return out.join(QStringLiteral("、"));
}

// Up to most words, or none when the chance is missed.
QStringList Repeats(Rng& rng, int most, double chance, const std::array<const char*, 4>& words) {
    QStringList out;
    if (most > 0 && rng.Chance(chance)) {
        for (int k = rng.Range(1, most); k > 0; --k) {
            out << Text(rng.Pick(words));
        }
    }
    return out;
}

PhotoPlan PlanPhoto(Rng& rng, const DeliveryPlan& delivery, const DeliveryOptions& options,
                    int index, int* drawingCounter) {
    const Shape shape = delivery.info->shape;
    const double optional = options.optionalShare;
    // The classification items are left out less often than the rest, as on real sites.
    const double classified = std::pow(std::clamp(optional, 0.0, 1.0), 0.25);
    PhotoPlan p;
    p.serial = index + 1;
    p.fileName = QStringLiteral("P%1.JPG").arg(p.serial, 7, 10, QLatin1Char('0'));

    const int majorPick = rng.Weighted(std::array<int, 3>{88, 7, 5});
    const bool works = majorPick == 0;
    if (shape != Shape::Flat11 || rng.Chance(classified)) {
        p.major = Text(std::array{"工事", "測量", "調査"}[static_cast<size_t>(majorPick)]);
    }
    const auto& table = delivery.river ? kRiverWorks : kRoadWorks;
    p.work = &table[static_cast<size_t>(rng.Below(static_cast<int>(table.size())))];
    const int categoryIndex = rng.Weighted(kCategoryWeights);
    const QString category = Text(kCategories[static_cast<size_t>(categoryIndex)]);
    // 写真区分 is required when the photograph is of the works.
    if (works || rng.Chance(optional)) {
        p.category = works ? category : QStringLiteral("その他");
    }
    // Categories shot by work type always name it (and every NEXCO works photograph), so that
    // a written delivery has every item its classification makes required.
    const bool byWorkType = categoryIndex == 1 || (categoryIndex >= 3 && categoryIndex <= 5) ||
                            delivery.info->family == 3;
    for (auto [field, text] : {std::pair{&PhotoPlan::kousyu, p.work->kousyu},
                               {&PhotoPlan::syubetsu, p.work->syubetsu},
                               {&PhotoPlan::saibetsu, p.work->saibetsu}}) {
        if (works && (rng.Chance(classified) || byWorkType)) {
            p.*field = Text(text);
        }
    }
    const QString subject = p.saibetsu ? *p.saibetsu : p.syubetsu ? *p.syubetsu : QString();
    const auto withSubject = [&](const QString& what) {
        return subject.isEmpty() ? what : subject + QLatin1Char(' ') + what;
    };
    p.title = [&]() -> QString {
        if (!works) {
            return Text(majorPick == 1 ? rng.Pick(kSurveyTitles) : rng.Pick(kStudyTitles));
        }
        switch (categoryIndex) {
            case 0:
                return index < options.photoCount / 2 ? "着手前 全景" : "完成 全景";
            case 1:
                return withSubject(Text(rng.Pick(kWorkActions)));
            case 2:
                return Text(rng.Pick(kSafety));
            case 3:
                return Text(p.work->material) + " 材料検収";
            case 4:
                return withSubject(Text(rng.Pick(kTests)));
            case 5:
                return withSubject("出来形 " + Text(rng.Pick(kMeasures)));
            case 6:
                return rng.Chance(0.5) ? "被災状況" : "応急処置状況";
        }
        return "現場環境 清掃状況";
    }();

    if (shape == Shape::S05 && rng.Chance(optional)) {
        const QString base = QString(p.title).remove(QLatin1Char(' '));
        p.japaneseName =
            QStringLiteral("%1_%2.JPG").arg(base).arg(p.serial, 4, 10, QLatin1Char('0'));
    }
    if (shape != Shape::Flat11) {
        p.kubunSpares = Repeats(rng, options.maxRepeats, optional * 0.5, kKubunSpares);
    }

    if (rng.Chance(options.drawingShare)) {
        int n = rng.Range(1, std::max(1, options.maxRepeats));
        if (shape == Shape::Flat11) {
            n = std::min(n, 3);  // only 参考図1 to 参考図3 exist there
        }
        for (int k = 0; k < n; ++k) {
            DrawingPlan d;
            d.fileName = QStringLiteral("D%1.JPG").arg(++*drawingCounter, 7, 10, QLatin1Char('0'));
            d.scene = p.work->scene;
            const QString kind = Text(rng.Pick(kDrawingKinds));
            d.title = (p.syubetsu ? *p.syubetsu : Text(p.work->syubetsu)) + QLatin1Char(' ') + kind;
            if (shape == Shape::S05 && rng.Chance(optional)) {
                d.japaneseName = QString(d.title).remove(QLatin1Char(' ')) + QStringLiteral(".JPG");
            }
            d.spares = Repeats(rng, options.maxRepeats, optional * 0.5, kDrawingSpares);
            p.drawings << d;
        }
    }

    if (rng.Chance(classified)) {
        p.place = delivery.places[rng.Below(static_cast<int>(delivery.places.size()))];
    }
    const int span = static_cast<int>(delivery.start.daysTo(delivery.end));
    const int day = options.photoCount > 1 ? span * index / (options.photoCount - 1) : 0;
    p.date = delivery.start.addDays(std::clamp(day + rng.Range(-3, 3), 0, span));
    const bool dateRequired = shape == Shape::S04 || shape == Shape::S05;
    // 撮影情報 is never written empty: a photograph without a place keeps its date.
    p.dateWritten = dateRequired || rng.Chance(classified) || (shape != Shape::Flat11 && !p.place);
    p.representative = rng.Chance(categoryIndex == 0 ? 0.6 : 0.08) ? "1" : "0";
    const QString submission = rng.Chance(0.4) ? "1" : "0";
    if (delivery.info->family != 2 || rng.Chance(optional)) {  // optional for 農水省 only
        p.submission = submission;
    }
    const bool measured = works && (categoryIndex == 4 || categoryIndex == 5);
    if ((shape == Shape::S04 || shape == Shape::S05) && measured && rng.Chance(optional)) {
        p.controlValue = ControlValue(rng);
    }
    if (rng.Chance(optional * 0.3)) {
        p.explanation = Text(rng.Pick(kExplanations));
    }
    if (shape == Shape::Flat11 && rng.Chance(optional * 0.5)) {
        p.seiriFlag = rng.Chance(0.5) ? "1" : "0";
    }
    return p;
}

ExifFacts PlanExif(const DeliveryPlan& delivery, const DeliveryOptions& options, int index,
                   const PhotoPlan& photo) {
    Rng rng(SubSeed(options.seed, index, 0xE71F));
    ExifFacts facts;
    const Camera& camera = rng.Pick(kCameras);
    facts.make = QString::fromLatin1(camera.make);
    facts.model = QString::fromLatin1(camera.model);
    facts.software = QString::fromLatin1(camera.software);
    const QTime time(rng.Range(8, 16), rng.Below(60), rng.Below(60));
    facts.dateTimeOriginal = QDateTime(photo.date, time);
    const int turn = rng.Below(100);
    facts.orientation = turn < 95 ? 1 : turn < 98 ? 6 : 8;
    facts.exposureTime = 1.0 / rng.Pick(std::array<int, 5>{60, 125, 250, 500, 1000});
    facts.fNumber = rng.Pick(std::array<double, 4>{2.8, 4.0, 5.6, 8.0});
    facts.focalLength = rng.Pick(std::array<double, 4>{4.5, 6.0, 9.0, 12.3});
    facts.isoSpeed = rng.Pick(std::array<int, 3>{100, 200, 400});
    facts.exposureBias = rng.Pick(std::array<double, 6>{0.0, 0.0, 0.0, -0.3, 0.3, 0.7});
    facts.flash = rng.Pick(std::array<int, 5>{0, 0, 0, 16, 25});
    facts.meteringMode = rng.Pick(std::array<int, 3>{5, 5, 2});
    facts.hasGps = rng.Chance(0.85);
    if (facts.hasGps) {
        facts.latitude = delivery.siteLatitude + (rng.Real() - 0.5) * 0.004;
        facts.longitude = delivery.siteLongitude + (rng.Real() - 0.5) * 0.004;
        facts.altitude = std::round((5.0 + rng.Real() * 100.0) * 10.0) / 10.0;
    }
    if (options.images == DeliveryOptions::Images::Tiny) {
        facts.thumbnailSize = QSize(32, 24);
    }
    if (facts.orientation == 6 || facts.orientation == 8) {
        facts.thumbnailSize.transpose();
    }
    return facts;
}

using Elements = QList<QPair<QString, QString>>;
using Leaves = QList<std::pair<QString, std::optional<QString>>>;

std::optional<QString> Maybe(bool written, const QString& text) {
    return written ? std::optional<QString>(text) : std::nullopt;
}

bool Fail(QString* error, const QString& message) {
    *error = message;
    return false;
}

// Streams XML text as CP932 bytes and, when asked, records the leaves in file order. Tags and
// the repeated vocabulary are converted once and kept, which is what makes a hundred thousand
// photographs a matter of seconds.
class SjisXml {
public:
    SjisXml(QIODevice* device, bool indent) : device(device), indent(indent) {
        buffer.reserve(kFlushAt + 4096);
    }

    void Record(Elements* target) { record = target; }
    void Line(const QString& text) { buffer.append(Encode(text)).append("\r\n"); }
    void Open(const QString& tag, const QString& attributes = {}) {
        Indent().append('<').append(Encode(tag));
        if (!attributes.isEmpty()) {
            buffer.append(' ').append(Encode(attributes));
        }
        EndLine('>');
        ++depth;
    }
    void Close(const QString& tag) {
        --depth;
        Indent().append("</").append(Encode(tag));
        EndLine('>');
        if (buffer.size() >= kFlushAt) {
            Flush();
        }
    }
    // An empty text leaves the element out.
    void Leaf(const QString& tag, const std::optional<QString>& text) {
        if (!text) {
            return;
        }
        const QByteArray tagBytes = Encode(tag);
        QString escaped = *text;
        escaped.replace('&', "&amp;").replace('<', "&lt;").replace('>', "&gt;");
        Indent().append('<').append(tagBytes).append('>').append(Encode(escaped));
        buffer.append("</").append(tagBytes);
        EndLine('>');
        if (record) {
            record->append({tag, *text});
        }
    }
    void Write(const Leaves& leaves) {
        for (const auto& [tag, text] : leaves) {
            Leaf(tag, text);
        }
    }
    void Block(const QString& tag, const Leaves& leaves) {
        Open(tag);
        Write(leaves);
        Close(tag);
    }
    bool Finish() {
        Flush();
        return ok;
    }

private:
    static constexpr qsizetype kFlushAt = 1 << 20;

    QByteArray& Indent() { return buffer.append(QByteArray(indent ? depth * 2 : 0, ' ')); }
    void EndLine(char last) {
        buffer.append(last);
        if (indent) {
            buffer.append("\r\n");
        }
    }
    void Flush() {
        if (!buffer.isEmpty() && device->write(buffer) != buffer.size()) {
            ok = false;
        }
        buffer.clear();
    }
    // By value: the cache may rehash on the next insert, and the copy is only a reference count.
    QByteArray Encode(const QString& text) {
        if (std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; })) {
            return text.toLatin1();
        }
        if (auto it = cache.constFind(text); it != cache.constEnd()) {
            return *it;
        }
        bool converted = true;
        QByteArray bytes = Cp932::FromUnicode(text, &converted);
        ok = ok && converted;
        if (cache.size() > 100000) {
            cache.clear();
        }
        cache.insert(text, bytes);
        return bytes;
    }

    QIODevice* device;
    bool indent;
    int depth = 0;
    bool ok = true;
    QByteArray buffer;
    QHash<QString, QByteArray> cache;
    Elements* record = nullptr;
};

// Writes the XML file at path through body, which may fail with its own error.
bool WriteXml(const QString& path, bool indent, QString* error,
              const std::function<bool(SjisXml&)>& body) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return Fail(error, QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    }
    SjisXml xml(&file, indent);
    xml.Line(QStringLiteral("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>"));
    if (!body(xml)) {
        return false;
    }
    if (!xml.Finish()) {
        return Fail(error, QStringLiteral("cannot write %1 (disk full, or text without a "
                                          "Shift_JIS form)")
                               .arg(path));
    }
    return file.commit() ||
           Fail(error, QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
}

void WritePhoto(SjisXml& xml, const PhotoPlan& p, Shape shape) {
    const QString serial = QString::number(p.serial);
    const std::optional<QString> date = Maybe(p.dateWritten, p.date.toString(Qt::ISODate));
    const Leaves classification = {{"写真-大分類", p.major}, {"写真区分", p.category},
                                   {"工種", p.kousyu},       {"種別", p.syubetsu},
                                   {"細別", p.saibetsu},     {"写真タイトル", p.title}};
    xml.Open("写真情報");
    if (shape == Shape::Flat11) {
        xml.Write({{"シリアル番号", serial}, {"写真ファイル名", p.fileName}});
        xml.Write(classification);
        xml.Write({{"撮影箇所", p.place}, {"撮影年月日", date}});
        for (int k = 0; k < p.drawings.size(); ++k) {
            xml.Leaf(QStringLiteral("参考図%1").arg(k + 1), p.drawings[k].fileName);
        }
        xml.Leaf("整理フラグ", p.seiriFlag);
        xml.Close("写真情報");
        return;
    }
    xml.Block("写真ファイル情報", {{"シリアル番号", serial},
                                   {"写真ファイル名", p.fileName},
                                   {"写真ファイル日本語名", p.japaneseName},
                                   {"メディア番号", "1"}});
    xml.Open("撮影工種区分");
    xml.Write(classification);
    for (const QString& spare : p.kubunSpares) {
        xml.Leaf("工種区分予備", spare);
    }
    xml.Close("撮影工種区分");
    for (const DrawingPlan& d : p.drawings) {
        xml.Open("付加情報");
        xml.Write({{"参考図ファイル名", d.fileName},
                   {"参考図ファイル日本語名", Maybe(shape == Shape::S05, d.japaneseName)},
                   {"参考図タイトル", d.title}});
        for (const QString& spare : d.spares) {
            xml.Leaf("付加情報予備", spare);
        }
        xml.Close("付加情報");
    }
    xml.Block("撮影情報", {{"撮影箇所", p.place}, {"撮影年月日", date}});
    xml.Write({{"代表写真", p.representative},
               {"提出頻度写真", p.submission},
               {"施工管理値", p.controlValue},
               {"請負者説明文", p.explanation}});
    xml.Close("写真情報");
}

bool WriteIndexFile(const QString& path, const DeliveryPlan& plan, bool indent, QString* error) {
    const GenerationInfo& info = *plan.info;
    return WriteXml(path, indent, error, [&](SjisXml& xml) {
        xml.Line(QStringLiteral("<!DOCTYPE constdata SYSTEM \"%1\">").arg(Text(info.indexDtd)));
        const QString version = Text(info.indexDtd).mid(6, 2);
        xml.Open("constdata", QStringLiteral("DTD_version=\"%1\"").arg(version));
        xml.Block("基礎情報", {{"メディア番号", "1"},
                               {"メディア総枚数", "1"},
                               {"適用要領基準", Text(info.standard)},
                               {"写真フォルダ名", "PHOTO"}});
        xml.Open("工事件名等");
        xml.Write({{"発注年度", QString::number(info.year)},
                   {"工事番号", plan.ordererCode + "01"},
                   {"工事名称", plan.workName},
                   {"工事分野", plan.river ? "河川" : "道路"},
                   {"工事業種", "一般土木工事"}});
        xml.Block("住所情報", {{"住所コード", "13999"}, {"住所", "緑ヶ丘県緑ヶ丘市本町一丁目"}});
        xml.Write(
            {{"工期開始日", plan.start.toString(Qt::ISODate)},
             {"工期終了日", plan.end.toString(Qt::ISODate)},
             {"工事内容", plan.river ? "護岸工、河川土工、樋管工" : "道路土工、擁壁工、舗装工"}});
        xml.Close("工事件名等");
        xml.Block("場所情報", {{"測地系", "01"}});
        xml.Block("発注者情報", {{"発注者-大分類", plan.orderer},
                                 {"発注者-中分類", plan.office},
                                 {"発注者コード", plan.ordererCode}});
        const QString party = info.shape == Shape::S05 ? "受注者" : "請負者";
        xml.Block(party + "情報",
                  {{party + "名", plan.contractor}, {party + "コード", plan.contractorCode}});
        xml.Close("constdata");
        return true;
    });
}

bool WriteImages(const QString& photoFolder, const DeliveryPlan& delivery,
                 const DeliveryOptions& options, int index, const PhotoPlan& photo,
                 const ExifFacts& facts, QString* error) {
    const bool boards = options.images == DeliveryOptions::Images::Boards;
    const auto jpeg = [&](const QString& path, const QImage& image, const ExifFacts& exif) {
        return WriteExifJpeg(path, image, exif, 85) ||
               Fail(error, QStringLiteral("cannot write %1").arg(path));
    };
    QImage upright(options.tinySize, QImage::Format_RGB32);
    if (boards) {
        upright = DrawSitePhoto({.workName = delivery.workName,
                                 .kousyu = photo.kousyu.value_or(QString()),
                                 .syubetsu = photo.syubetsu.value_or(QString()),
                                 .place = photo.place.value_or(QString()),
                                 .title = photo.title,
                                 .date = photo.date,
                                 .scene = photo.work->scene,
                                 .river = delivery.river,
                                 .seed = SubSeed(options.seed, index, 0xB0A2)},
                                options.imageSize);
    } else {
        upright.fill(QColor::fromHsv((index * 37) % 360, 120, 200));
    }
    // The stored pixels of a photograph whose camera was turned: the viewer rotates them back
    // by the orientation tag, so the scene is drawn upright and turned the other way here.
    const int turn = facts.orientation == 6 ? -90 : facts.orientation == 8 ? 90 : 0;
    const QImage stored = turn ? upright.transformed(QTransform().rotate(turn)) : upright;
    if (!jpeg(photoFolder + "/PIC/" + photo.fileName, stored, facts)) {
        return false;
    }
    // The file keeps the time it was taken, as one copied off the camera does.
    if (facts.dateTimeOriginal.isValid()) {
        QFile written(photoFolder + "/PIC/" + photo.fileName);
        if (!written.open(QIODevice::ReadWrite) ||
            !written.setFileTime(facts.dateTimeOriginal, QFileDevice::FileModificationTime)) {
            return Fail(error, QStringLiteral("cannot date %1").arg(written.fileName()));
        }
    }
    ExifFacts plain;
    plain.writeExif = false;
    for (const DrawingPlan& d : photo.drawings) {
        QImage drawing(64, 48, QImage::Format_RGB32);
        drawing.fill(Qt::white);
        if (boards) {
            drawing = DrawReferenceDrawing(d.scene, d.title, options.imageSize);
        }
        if (!jpeg(photoFolder + "/DRA/" + d.fileName, drawing, plain)) {
            return false;
        }
    }
    return true;
}

}  // namespace

QString SectionName(Generation generation) {
    return Text(Info(generation).section);
}

int FamilyOf(Generation generation) {
    return Info(generation).family;
}

QList<Generation> AllGenerations() {
    QList<Generation> all;
    for (size_t i = 0; i < kGenerations.size(); ++i) {
        all << static_cast<Generation>(i);
    }
    return all;
}

bool GenerationFromName(const QString& name, Generation* generation) {
    for (const GenerationInfo& info : kGenerations) {
        if (name == Text(info.section) ||
            name.compare(QLatin1String(info.ascii), Qt::CaseInsensitive) == 0) {
            *generation = static_cast<Generation>(&info - kGenerations.data());
            return true;
        }
    }
    return false;
}

bool WriteDelivery(const QString& root, const DeliveryOptions& options, WrittenDelivery* written,
                   QString* error) {
    QString ignored;
    error = error ? error : &ignored;
    if (options.photoCount < 1) {
        return Fail(error, "a delivery needs at least one photograph");
    }
    const bool images = options.images != DeliveryOptions::Images::None;
    if (options.images == DeliveryOptions::Images::Boards) {
        if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
            return Fail(error, "drawing the blackboard photographs needs a QGuiApplication");
        }
        if (options.imageSize.width() < 32 || options.imageSize.height() < 24) {
            return Fail(error, "the image size must be at least 32 x 24");
        }
    }

    const QString indexFolder = QDir(root).absoluteFilePath(QStringLiteral("INDEX_C"));
    const QString photoFolder = indexFolder + QStringLiteral("/PHOTO");
    if (!QDir().mkpath(photoFolder) || (images && !QDir().mkpath(photoFolder + "/PIC"))) {
        return Fail(error, QStringLiteral("cannot create the folder %1").arg(photoFolder));
    }

    const DeliveryPlan delivery = PlanDelivery(options);
    const GenerationInfo& info = *delivery.info;
    const bool flat = info.shape == Shape::Flat11;

    // Planned in full first: the management block says whether there are drawings at all.
    Rng rng(SubSeed(options.seed, 0, 0x9407));
    int drawingCounter = 0;
    QList<PhotoPlan> plans;
    plans.reserve(options.photoCount);
    for (int i = 0; i < options.photoCount; ++i) {
        plans.append(PlanPhoto(rng, delivery, options, i, &drawingCounter));
    }
    const bool hasDrawings = drawingCounter > 0;
    if (images && hasDrawings && !QDir().mkpath(photoFolder + "/DRA")) {
        return Fail(error, QStringLiteral("cannot create the folder %1/DRA").arg(photoFolder));
    }

    if (written) {
        *written = WrittenDelivery();
        written->photoFolder = photoFolder;
        written->family = info.family;
        written->photos.reserve(options.photoCount);
    }
    if (!WriteIndexFile(indexFolder + "/INDEX_C.XML", delivery, options.indent, error)) {
        return false;
    }

    return WriteXml(photoFolder + "/PHOTO.XML", options.indent, error, [&](SjisXml& xml) {
        xml.Record(written ? &written->managementElements : nullptr);
        xml.Line(QStringLiteral("<!DOCTYPE photodata SYSTEM \"%1\">").arg(Text(info.dtd)));
        xml.Open("photodata", QStringLiteral("DTD_version=\"%1\"").arg(Text(info.dtdVersion)));
        xml.Block("基礎情報", {{"メディア番号", Maybe(flat, "1")},
                               {"メディア総枚数", Maybe(flat, "1")},
                               {"写真フォルダ名", "PHOTO/PIC"},
                               {"参考図フォルダ名", Maybe(hasDrawings, "PHOTO/DRA")},
                               {"適用要領基準", Maybe(!flat, Text(info.standard))}});
        if (flat) {
            xml.Block("工事情報", {{"工事件名", delivery.workName}});
        }

        for (int i = 0; i < plans.size(); ++i) {
            const PhotoPlan& plan = plans[i];
            WrittenPhoto* photo = nullptr;
            if (written) {
                photo = &written->photos.emplace_back();
                photo->fileName = plan.fileName;
                for (const DrawingPlan& d : plan.drawings) {
                    photo->drawings << d.fileName;
                }
            }
            xml.Record(photo ? &photo->elements : nullptr);
            WritePhoto(xml, plan, info.shape);
            if (images || photo) {
                const ExifFacts facts = PlanExif(delivery, options, i, plan);
                if (photo) {
                    photo->exif = facts;
                }
                if (images && !WriteImages(photoFolder, delivery, options, i, plan, facts, error)) {
                    return false;
                }
            }
        }

        xml.Record(written ? &written->managementElements : nullptr);
        Rng tail(SubSeed(options.seed, 0, 0x7A11));
        if (options.maxRepeats > 0 && tail.Chance(options.optionalShare)) {
            const int n = tail.Range(1, options.maxRepeats);
            for (int k = 0; k < n; ++k) {
                xml.Leaf("ソフトメーカ用TAG", QStringLiteral("TOVI-MAKEDELIVERY %1").arg(k + 1));
            }
        }
        xml.Close("photodata");
        return true;
    });
}
