#include "platform/linux/GioApplicationCatalog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

namespace {

void write(const QString& path, const QByteArray& text) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

} // namespace

// Desktop entries as GIO reads them: the user's own folder (the test's XDG_DATA_HOME) and files
// picked from anywhere.
class TestApplicationCatalog : public QObject {
    Q_OBJECT

    QTemporaryDir m_elsewhere;
    QString m_applications;

private slots:
    void initTestCase() {
        m_applications = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                         u"/applications"_s;
        write(m_applications + u"/org.example.Notes.desktop"_s,
              "[Desktop Entry]\nType=Application\nName=Example Notes\nExec=true\nIcon=notes\n");
        write(m_applications + u"/org.example.Hidden.desktop"_s,
              "[Desktop Entry]\nType=Application\nName=Hidden Helper\nExec=true\nNoDisplay=true\n");
        write(m_elsewhere.filePath(u"tool.desktop"_s),
              "[Desktop Entry]\nType=Application\nName=Portable Tool\nExec=true\n");
        write(m_elsewhere.filePath(u"site.desktop"_s),
              "[Desktop Entry]\nType=Link\nName=A Site\nURL=https://example.org\n");
        write(m_elsewhere.filePath(u"notes.txt"_s), "not an entry\n");
    }

    void listsWhatALauncherShows() {
        QStringList listed;
        for (const auto& app : GioApplicationCatalog().installedApplications()) {
            listed << app.id + u'|' + app.name + u'|' + app.iconName;
        }
        QVERIFY(listed.contains(u"org.example.Notes|Example Notes|notes"_s));
        QVERIFY(!listed.join(u'\n').contains(u"org.example.Hidden"_s));
    }

    void readsEntriesFromAnywhere_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("name");
        QTest::newRow("installed") << m_applications + u"/org.example.Notes.desktop"_s
                                   << u"org.example.Notes"_s << u"Example Notes"_s;
        QTest::newRow("elsewhere")
            << m_elsewhere.filePath(u"tool.desktop"_s) << u"tool"_s << u"Portable Tool"_s;
        QTest::newRow("a link, not an application")
            << m_elsewhere.filePath(u"site.desktop"_s) << QString() << QString();
        QTest::newRow("not an entry")
            << m_elsewhere.filePath(u"notes.txt"_s) << QString() << QString();
        QTest::newRow("missing") << m_elsewhere.filePath(u"gone.desktop"_s) << QString()
                                 << QString();
    }
    void readsEntriesFromAnywhere() {
        QFETCH(QString, file);
        QFETCH(QString, id);
        QFETCH(QString, name);
        GioApplicationCatalog catalog;
        const auto app = catalog.applicationAt(file);
        QCOMPARE(app ? app->id : QString(), id);
        QCOMPARE(app ? app->name : QString(), name);
    }
};

QTEST_GUILESS_MAIN(TestApplicationCatalog)
#include "tst_applicationcatalog.moc"
