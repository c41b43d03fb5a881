#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <map>
#include <utility>

#include <gtest/gtest.h>

#include "TessaraApp/Wording/SystemWording.h"

namespace tessara {
namespace {

/// Translations by context and source.
using Texts = std::map<std::pair<QString, QString>, QString>;

Texts readTexts(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QXmlStreamReader xml(&file);
    Texts texts;
    QString context;
    QString source;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) continue;
        if (xml.name() == QLatin1String("name")) context = xml.readElementText();
        if (xml.name() == QLatin1String("source")) source = xml.readElementText();
        if (xml.name() == QLatin1String("translation"))
            texts[{context, source}] = xml.readElementText();
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return texts;
}

/// Every text of the sources that a user can see, found by the tool that collects them for
/// translators.
Texts textsOfTheSources() {
    const QTemporaryDir folder;
    const QString found = folder.filePath(QStringLiteral("found.ts"));
    const QString sources = QStringLiteral(SOURCE_FOLDER);
    EXPECT_EQ(
        QProcess::execute(
            QStringLiteral(LUPDATE),
            {"-silent", "-recursive", sources + "/TessaraApp", sources + "/Programs/DesktopProgram",
             sources + "/Programs/tessara-demo/Desk", "-I", sources + "/TessaraApp/include", "-I",
             sources + "/TessaraApp/ViewModels/include", "-I",
             sources + "/Programs/tessara-demo/Desk/include", "-ts", found}),
        0);
    return readTexts(found);
}

/// What is another system's: its names, its keys, its settings, and the words for its permissions.
const QRegularExpression& otherSystem() {
    static const QRegularExpression names(
        QStringLiteral("macOS|\\bMac\\b|System Settings|Finder|Login Items|Tessara\\.app|ProMotion|"
                       "menu bar|Photoshop|[⌘⌥⌃⇧]|Input Monitoring|Accessibility|"
                       "Open %1 Settings|opens the page|the switch"));
    return names;
}

TEST(Wording, no_text_on_linux_names_another_system_and_nothing_else_is_replaced) {
    const Texts texts = textsOfTheSources();
    const Texts onLinux =
        readTexts(QStringLiteral(SOURCE_FOLDER "/TessaraApp/Wording/tessara_linux.ts"));
    ASSERT_GT(texts.size(), 100U);
    for (const auto& [key, unused] : texts) {
        const bool isUntrue = otherSystem().match(key.second).hasMatch();
        EXPECT_EQ(onLinux.contains(key), isUntrue) << key.second.toStdString();
    }
    for (const auto& [key, text] : onLinux) {
        EXPECT_TRUE(texts.contains(key)) << "nobody says: " << key.second.toStdString();
        EXPECT_FALSE(otherSystem().match(text).hasMatch()) << text.toStdString();
        EXPECT_EQ(key.second.count(QStringLiteral("%1")), text.count(QStringLiteral("%1")))
            << text.toStdString();
    }
}

TEST(Wording, is_in_force_for_as_long_as_it_lives) {
    int argumentCount = 0;
    const QCoreApplication application(argumentCount, nullptr);
    const auto said = [] {
        return QCoreApplication::translate("tessara::SettingsViewModel", "Show In Finder");
    };
    EXPECT_EQ(said(), "Show In Finder");
    {
        const SystemWording wording;
        EXPECT_EQ(said(), "Show In File Manager");
    }
    EXPECT_EQ(said(), "Show In Finder");
}

}  // namespace
}  // namespace tessara
