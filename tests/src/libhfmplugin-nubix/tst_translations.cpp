// SPDX-License-Identifier: GPL-3.0-or-later
// The shipped translations against the texts in the code: lupdate runs over
// the sources into a copy of each .ts file, and every text must come out
// translated, with its placeholders, tags and link targets kept.
#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

namespace {

struct Message
{
    QString context;
    QString source;
    QString translation;
    QString type;   // "unfinished", "vanished", "obsolete" or empty when finished
};

struct Catalogue
{
    QString tsFile;   // in the source tree
    QStringList scan;   // folders whose texts it translates
};

QHash<QString, Catalogue> catalogues()
{
    const QString src = QStringLiteral(NUBIX_SOURCE_DIR);
    const QStringList plugin {src + QStringLiteral("/src/libhfmplugin-nubix")};
    QStringList host;
    for (const char *dir : {"app", "hfmbase", "htk", "plugins"})
        host.append(src + QStringLiteral("/host/") + QLatin1String(dir));
    const QString pluginTs = src + QStringLiteral("/src/libhfmplugin-nubix/translations/hfmplugin-nubix_%1.ts");
    const QString hostTs = src + QStringLiteral("/host/translations/hde-file-manager_%1.ts");
    return {
        {QStringLiteral("plug-in de"), {pluginTs.arg(QStringLiteral("de")), plugin}},
        {QStringLiteral("plug-in zh_CN"), {pluginTs.arg(QStringLiteral("zh_CN")), plugin}},
        {QStringLiteral("host de"), {hostTs.arg(QStringLiteral("de")), host}},
        {QStringLiteral("host zh_CN"), {hostTs.arg(QStringLiteral("zh_CN")), host}},
    };
}

QList<Message> readTs(const QString &path)
{
    QList<Message> messages;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return messages;
    QXmlStreamReader xml(&file);
    QString context;
    Message current;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.name() == QLatin1String("message")) {
            current = Message {context, {}, {}, {}};
        } else if (xml.name() == QLatin1String("source")) {
            current.source = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            current.type = xml.attributes().value(QStringLiteral("type")).toString();
            current.translation = xml.readElementText();
            messages.append(current);
        }
    }
    // A file that does not parse must not pass as one without problems.
    if (xml.hasError())
        messages.append(Message {QStringLiteral("<unreadable>"), xml.errorString(), {}, QStringLiteral("broken")});
    return messages;
}

// The parts of a text that code and links depend on: %1..%9, tag names and
// link targets. Their order may change with the language; their set may not.
QStringList structure(const QString &text)
{
    QStringList parts;
    static const QRegularExpression pattern(QStringLiteral("%[1-9]|</?([a-zA-Z]+)|href=\"([^\"]*)\"|\n"));
    auto it = pattern.globalMatch(text);
    while (it.hasNext())
        parts.append(it.next().captured(0));
    parts.sort();
    return parts;
}

}   // namespace

class TestTranslations : public QObject
{
    Q_OBJECT

private slots:
    void everyTextTranslated_data()
    {
        QTest::addColumn<QString>("tsFile");
        QTest::addColumn<QStringList>("scan");
        const auto all = catalogues();
        for (auto it = all.cbegin(); it != all.cend(); ++it)
            QTest::newRow(qPrintable(it.key())) << it->tsFile << it->scan;
    }

    void everyTextTranslated()
    {
        QFETCH(QString, tsFile);
        QFETCH(QStringList, scan);
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString copy = dir.filePath(QFileInfo(tsFile).fileName());
        QVERIFY2(QFile::copy(tsFile, copy), qPrintable(tsFile));

        // Obsolete entries are kept so that texts gone from the code show up too.
        QProcess lupdate;
        lupdate.start(QStringLiteral(NUBIX_LUPDATE),
            QStringList {QStringLiteral("-silent"), QStringLiteral("-locations"), QStringLiteral("none")} + scan
                + QStringList {QStringLiteral("-ts"), copy});
        QVERIFY(lupdate.waitForFinished(60000));
        QVERIFY2(lupdate.exitCode() == 0, lupdate.readAllStandardError().constData());

        const QList<Message> messages = readTs(copy);
        QVERIFY(!messages.isEmpty());
        QStringList problems;
        for (const Message &m : messages) {
            if (!m.type.isEmpty())
                problems.append(QStringLiteral("%1 (%2): \"%3\"").arg(m.type, m.context, m.source));
            else if (m.translation.trimmed().isEmpty())
                problems.append(QStringLiteral("empty (%1): \"%2\"").arg(m.context, m.source));
            else if (structure(m.source) != structure(m.translation))
                problems.append(
                    QStringLiteral("markup (%1): \"%2\" -> \"%3\"").arg(m.context, m.source, m.translation));
        }
        if (!problems.isEmpty())
            problems.prepend(QStringLiteral("%1 needs work: build the target hfmplugin-nubix-translations-lupdate "
                                            "(or hde-file-manager-translations-lupdate) and translate:")
                                 .arg(QFileInfo(tsFile).fileName()));
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(QLatin1Char('\n'))));
    }

    // The plug-in names the host's groups in the host's context; both sides must
    // say the same, or the drive ends up in a group of its own.
    void hostGroupNamesAgree()
    {
        const auto all = catalogues();
        for (const QString &lang : {QStringLiteral("de"), QStringLiteral("zh_CN")}) {
            QHash<QPair<QString, QString>, QString> host;
            const QList<Message> hostMessages = readTs(all.value(QStringLiteral("host ") + lang).tsFile);
            for (const Message &m : hostMessages)
                host.insert({m.context, m.source}, m.translation);
            QVERIFY(
                host.contains({QStringLiteral("hfmplugin_computer::ComputerItemWatcher"), QStringLiteral("Disks")}));
            const QList<Message> pluginMessages = readTs(all.value(QStringLiteral("plug-in ") + lang).tsFile);
            for (const Message &m : pluginMessages) {
                if (!m.context.startsWith(QLatin1String("hfmplugin_computer::")))
                    continue;
                QVERIFY2(host.contains({m.context, m.source}), qPrintable(m.source));
                QCOMPARE(m.translation, host.value({m.context, m.source}));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestTranslations)
#include "tst_translations.moc"
