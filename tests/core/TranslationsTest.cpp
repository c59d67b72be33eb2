// The translation files: every text of the code translated, placeholders kept, and the compiled files loadable.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QLocale>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTranslator>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <utility>
#include <vector>

namespace {

struct TsMessage {
    QString context;
    QString source;
    QString comment;
    bool numerus = false;
    bool unfinished = false;
    QStringList translations; // one per plural form for numerus messages
};

struct TsFile {
    QString path;
    QString localeName; // from the file name video-player-ui.<locale>.ts
    std::vector<TsMessage> messages;
};

TsFile readTsFile(const QString& path) {
    TsFile file;
    file.path = path;
    file.localeName = QFileInfo(path).completeBaseName().section(QLatin1Char('.'), -1);
    QFile input(path);
    EXPECT_TRUE(input.open(QIODevice::ReadOnly)) << path.toStdString();
    QXmlStreamReader xml(&input);
    QString context;
    TsMessage message;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        const QStringRef tag = xml.name();
        if (tag == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (tag == QLatin1String("message")) {
            message = TsMessage{context, {}, {}, xml.attributes().value(QLatin1String("numerus")) == QLatin1String("yes")};
        } else if (tag == QLatin1String("source")) {
            message.source = xml.readElementText();
        } else if (tag == QLatin1String("comment")) {
            message.comment = xml.readElementText();
        } else if (tag == QLatin1String("translation")) {
            const QStringRef type = xml.attributes().value(QLatin1String("type"));
            message.unfinished = !type.isEmpty(); // unfinished, obsolete or vanished
            if (message.numerus) {
                while (xml.readNextStartElement())
                    message.translations << xml.readElementText();
            } else {
                message.translations << xml.readElementText();
            }
            file.messages.push_back(message);
        }
    }
    EXPECT_FALSE(xml.hasError()) << path.toStdString() << ": " << xml.errorString().toStdString();
    return file;
}

std::vector<TsFile> translationFiles() {
    std::vector<TsFile> files;
    const QDir directory(QStringLiteral(REELVUE_SOURCE_DIR "/translations"));
    for (const QString& name : directory.entryList({QStringLiteral("*.ts")}, QDir::Files, QDir::Name))
        files.push_back(readTsFile(directory.absoluteFilePath(name)));
    return files;
}

std::string where(const TsFile& file, const TsMessage& message) {
    return QStringLiteral("%1 [%2] \"%3\"").arg(file.localeName, message.context, message.source).toStdString();
}

// %1, %L2, %n and {}, sorted: their order may change in a translation, their set may not.
std::string placeholders(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral(R"(%L?(\d+|n)|\{\})"));
    QStringList found;
    for (auto it = pattern.globalMatch(text); it.hasNext();)
        found << it.next().captured(0);
    found.sort();
    return found.join(QLatin1Char(' ')).toStdString();
}

// Keyboard accelerators: a single & before a character ("&&" is a literal ampersand).
int acceleratorCount(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral(R"((?<!&)&(?!&)\S)"));
    int count = 0;
    for (auto it = pattern.globalMatch(text); it.hasNext(); it.next())
        ++count;
    return count;
}

std::string leadingSpace(const QString& text) {
    return text.left(text.size() - QString(text).remove(QRegularExpression(QStringLiteral("^\\s+"))).size())
        .toStdString();
}

std::string trailingSpace(const QString& text) {
    return text.right(text.size() - QString(text).remove(QRegularExpression(QStringLiteral("\\s+$"))).size())
        .toStdString();
}

std::set<std::pair<QString, QString>> keysOf(const TsFile& file) {
    std::set<std::pair<QString, QString>> keys;
    for (const TsMessage& message : file.messages)
        keys.insert({message.context, message.source});
    return keys;
}


// The menus of a Designer form: for each menu bar or menu, the texts of its entries (actions and sub-menus).
struct FormMenus {
    QString context; // the form's class, the translation context of its texts
    std::vector<QStringList> menus;
};

FormMenus readFormMenus(const QString& path) {
    QFile input(path);
    EXPECT_TRUE(input.open(QIODevice::ReadOnly)) << path.toStdString();
    QXmlStreamReader xml(&input);
    FormMenus form;
    std::map<QString, QString> texts;             // action or menu name -> its text or title
    std::map<QString, QStringList> entryNames;    // menu bar or menu name -> names of its entries
    std::vector<std::pair<QString, QString>> open; // element tag and name, outermost first
    QString owner; // the menu or action whose text the next <string> is
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement()) {
            open.pop_back();
            continue;
        }
        if (!xml.isStartElement())
            continue;
        const QString tag = xml.name().toString();
        const QString name = xml.attributes().value(QLatin1String("name")).toString();
        const QString widgetClass = xml.attributes().value(QLatin1String("class")).toString();
        if (tag == QLatin1String("class") && open.size() == 1) {
            form.context = xml.readElementText();
            continue;
        }
        if (tag == QLatin1String("widget") && (widgetClass == QLatin1String("QMenu") || widgetClass == QLatin1String("QMenuBar")))
            entryNames[name];
        if (tag == QLatin1String("addaction") && !open.empty() && entryNames.count(open.back().second))
            entryNames[open.back().second] << name;
        if (tag == QLatin1String("property") && open.size() >= 1 &&
            ((name == QLatin1String("title") && entryNames.count(open.back().second)) ||
             (name == QLatin1String("text") && open.back().first == QLatin1String("action"))))
            owner = open.back().second;
        if (tag == QLatin1String("string") && !owner.isEmpty()) {
            texts[owner] = xml.readElementText();
            owner.clear();
            continue;
        }
        open.emplace_back(tag, name);
    }
    for (const auto& [menu, names] : entryNames) {
        QStringList entries;
        for (const QString& name : names)
            if (texts.count(name))
                entries << texts[name];
        form.menus.push_back(entries);
    }
    return form;
}

QStringList formFiles() {
    QStringList files;
    for (QDirIterator it(QStringLiteral(REELVUE_SOURCE_DIR "/desktop/src"), {QStringLiteral("*.ui")}, QDir::Files,
                         QDirIterator::Subdirectories);
         it.hasNext();)
        files << it.next();
    return files;
}

// The character after a single &, lower-cased; empty without one.
QString acceleratorOf(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral(R"((?<!&)&([^&\s]))"));
    return pattern.match(text).captured(1).toLower();
}

} // namespace

TEST(Translations, russian_polish_and_czech_are_present_and_every_message_is_translated) {
    const std::vector<TsFile> files = translationFiles();
    QStringList locales;
    for (const TsFile& file : files)
        locales << file.localeName;
    for (const char* expected : {"cs_CZ", "pl_PL", "ru_RU"})
        EXPECT_TRUE(locales.contains(QLatin1String(expected))) << expected;

    for (const TsFile& file : files) {
        EXPECT_GT(file.messages.size(), 40u) << file.path.toStdString();
        for (const TsMessage& message : file.messages) {
            EXPECT_FALSE(message.unfinished) << where(file, message);
            ASSERT_FALSE(message.translations.isEmpty()) << where(file, message);
            for (const QString& translation : message.translations)
                EXPECT_FALSE(translation.trimmed().isEmpty()) << where(file, message);
            // Russian, Polish and Czech all have three plural forms.
            if (message.numerus)
                EXPECT_EQ(message.translations.size(), 3) << where(file, message);
        }
    }
}

TEST(Translations, placeholders_accelerators_and_spacing_match_the_source) {
    for (const TsFile& file : translationFiles()) {
        for (const TsMessage& message : file.messages) {
            for (const QString& translation : message.translations) {
                EXPECT_EQ(placeholders(translation), placeholders(message.source))
                    << where(file, message) << " -> " << translation.toStdString();
                EXPECT_EQ(acceleratorCount(translation), acceleratorCount(message.source))
                    << where(file, message) << " -> " << translation.toStdString();
                // Texts such as "Failed to start " are joined to a file name: the blank must stay.
                EXPECT_EQ(leadingSpace(translation), leadingSpace(message.source)) << where(file, message);
                EXPECT_EQ(trailingSpace(translation), trailingSpace(message.source)) << where(file, message);
                EXPECT_EQ(translation.count(QLatin1Char('\n')), message.source.count(QLatin1Char('\n')))
                    << where(file, message);
            }
        }
    }
}

// A text added to the code without re-running tools/update-translations would show in English.
TEST(Translations, files_hold_exactly_the_texts_of_the_code) {
    const QString lupdate = QStandardPaths::findExecutable(QStringLiteral("lupdate"));
    if (lupdate.isEmpty())
        GTEST_SKIP() << "lupdate is not installed (package qttools5-dev-tools)";
    QTemporaryDir scratch;
    const QString fresh = scratch.filePath(QStringLiteral("fresh.ts"));
    QProcess process;
    process.start(lupdate, {QStringLiteral("-silent"), QStringLiteral("-no-obsolete"), QStringLiteral("-locations"),
                            QStringLiteral("none"), QStringLiteral(REELVUE_SOURCE_DIR "/desktop/src"),
                            QStringLiteral("-ts"), fresh});
    ASSERT_TRUE(process.waitForFinished(60000));
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();

    const auto expected = keysOf(readTsFile(fresh));
    ASSERT_FALSE(expected.empty());
    for (const TsFile& file : translationFiles()) {
        const auto actual = keysOf(file);
        for (const auto& key : expected)
            EXPECT_TRUE(actual.count(key)) << file.localeName.toStdString() << " lacks [" << key.first.toStdString()
                                           << "] \"" << key.second.toStdString()
                                           << "\": run tools/update-translations and translate it";
        for (const auto& key : actual)
            EXPECT_TRUE(expected.count(key)) << file.localeName.toStdString() << " keeps [" << key.first.toStdString()
                                             << "] \"" << key.second.toStdString() << "\" that the code no longer has";
    }
}

// Two entries of one menu with the same accelerator letter would make Alt+letter ambiguous.
TEST(Translations, menu_accelerators_stay_unique_in_every_language) {
    const std::vector<TsFile> files = translationFiles();
    for (const QString& formPath : formFiles()) {
        const FormMenus form = readFormMenus(formPath);
        for (const QStringList& entries : form.menus) {
            for (const TsFile& file : files) {
                std::map<QString, QString> translated;
                for (const TsMessage& message : file.messages)
                    if (message.context == form.context && !message.translations.isEmpty())
                        translated[message.source] = message.translations.first();
                std::map<QString, QString> taken; // accelerator -> entry
                for (const QString& entry : entries) {
                    const QString text = translated.count(entry) ? translated[entry] : entry;
                    const QString key = acceleratorOf(text);
                    if (key.isEmpty())
                        continue;
                    EXPECT_FALSE(taken.count(key)) << file.localeName.toStdString() << ": \"" << text.toStdString()
                                                   << "\" and \"" << taken[key].toStdString() << "\" share &"
                                                   << key.toStdString();
                    taken[key] = text;
                }
            }
        }
    }
}

// The program loads video-player-ui.<locale>.qm from the run tree with these arguments.
TEST(Translations, compiled_files_in_the_run_tree_translate_every_message) {
    for (const TsFile& file : translationFiles()) {
        QTranslator translator;
        ASSERT_TRUE(translator.load(QLocale(file.localeName), QStringLiteral("video-player-ui"), QStringLiteral("."),
                                    QStringLiteral(REELVUE_RUN_DIR "/"), QStringLiteral(".qm")))
            << "no compiled translation for " << file.localeName.toStdString() << " in " REELVUE_RUN_DIR;
        for (const TsMessage& message : file.messages) {
            const QByteArray context = message.context.toUtf8();
            const QByteArray source = message.source.toUtf8();
            const QByteArray comment = message.comment.toUtf8();
            // With n = 1 Russian, Polish and Czech all pick their first plural form.
            const QString translated = translator.translate(context.constData(), source.constData(),
                                                            comment.isEmpty() ? nullptr : comment.constData(),
                                                            message.numerus ? 1 : -1);
            EXPECT_EQ(translated.toStdString(), message.translations.value(0).toStdString())
                << where(file, message) << " (rebuild the .qm?)";
        }
    }
}

TEST(Translations, known_texts_come_back_translated_for_each_language) {
    const struct {
        const char* context;
        const char* source;
    } known[] = {{"MainWindow", "&File"}, {"OpenDialog", "Open directory"}, {"MapWidget", "Zoom in"},
                 {"Version check", "Yes"}, {"ProgressDialog", "Cancel"}};
    const struct {
        const char* locale;
        const char* file; // translation of "&File"
    } languages[] = {{"ru_RU", "&Файл"}, {"pl_PL", "&Plik"}, {"cs_CZ", "&Soubor"}};

    for (const auto& language : languages) {
        QTranslator translator;
        ASSERT_TRUE(translator.load(QLocale(QString::fromLatin1(language.locale)), QStringLiteral("video-player-ui"),
                                    QStringLiteral("."), QStringLiteral(REELVUE_RUN_DIR "/"), QStringLiteral(".qm")))
            << language.locale;
        EXPECT_EQ(translator.translate("MainWindow", "&File").toStdString(), language.file) << language.locale;
        for (const auto& text : known) {
            const QString translated = translator.translate(text.context, text.source);
            EXPECT_FALSE(translated.isEmpty()) << language.locale << " " << text.source;
            EXPECT_NE(translated.toStdString(), text.source) << language.locale;
        }
    }
}
