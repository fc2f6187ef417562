// The demo editor as a user meets it: the real program on a real X server (Xvfb), driven by real
// key events (xdotool, through the XTest extension), checked through what a user sees and keeps:
// the window titles and the saved file.
//
// Exits with 77 (CTest's skip) when Xvfb is not installed; xdotool is a test dependency like any
// other (scripts/install-deps --dev). Every wait has a deadline of seconds, and the server and
// the program go with the test whatever happens.
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

namespace {

constexpr int skipped = 77;

// Runs until `condition` holds or `seconds` pass; whether it held.
bool waitFor(const std::function<bool()>& condition, int seconds) {
    const QDeadlineTimer deadline(seconds * 1000);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QThread::msleep(100);
    }
    return true;
}

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// An X server of its own on a free display, which it picks and reports itself (-displayfd).
class VirtualDisplay {
  public:
    VirtualDisplay() {
        server_.setProcessChannelMode(QProcess::SeparateChannels);
        server_.start("Xvfb", {"-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten",
                               "tcp", "-noreset"});
        if (!server_.waitForStarted(5000)) return;
        waitFor(
            [this] {
                server_.waitForReadyRead(100);
                return server_.canReadLine() || server_.state() == QProcess::NotRunning;
            },
            15);
        const QByteArray number = server_.readLine().trimmed();
        if (!number.isEmpty()) name_ = ":" + QString::fromLatin1(number);
    }
    ~VirtualDisplay() {
        server_.terminate();
        if (!server_.waitForFinished(5000)) server_.kill();
    }

    // Empty when the server did not come up.
    [[nodiscard]] const QString& name() const { return name_; }

  private:
    QProcess server_;
    QString name_;
};

}  // namespace

class DemoEndToEndTests : public QObject {
    Q_OBJECT

    QTemporaryDir home_;
    std::unique_ptr<VirtualDisplay> display_;

    // xdotool's answer, trimmed; no value when it failed or took more than five seconds.
    std::optional<QString> xdotool(const QStringList& arguments) {
        QProcess tool;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", display_->name());
        tool.setProcessEnvironment(environment);
        tool.start("xdotool", arguments);
        if (!tool.waitForFinished(5000)) {
            tool.kill();
            tool.waitForFinished(1000);
            return std::nullopt;
        }
        if (tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) return std::nullopt;
        return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
    }

    // The first visible window whose title matches `pattern`, waited for; empty if none came.
    QString window(const QString& pattern, int seconds = 10) {
        QString found;
        waitFor(
            [&] {
                found = xdotool({"search", "--onlyvisible", "--name", pattern})
                            .value_or(QString())
                            .section('\n', 0, 0);
                return !found.isEmpty();
            },
            seconds);
        return found;
    }

    QString titleOf(const QString& window) {
        return xdotool({"getwindowname", window}).value_or(QString());
    }

  private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(!QStandardPaths::findExecutable("xdotool").isEmpty(),
                 "xdotool is missing: scripts/install-deps --dev");
        display_ = std::make_unique<VirtualDisplay>();
        QVERIFY2(!display_->name().isEmpty(), "Xvfb did not start");
    }

    void openSelectSortUndoAndPreferencesByKeys() {
        const QString path = home_.filePath("fruit.txt");
        const QByteArray original = "zebra\npear\napple\ncherry\n";
        {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(original);
        }

        // Settings, caches and runtime files of the run stay in the scratch home.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", display_->name());
        environment.remove("WAYLAND_DISPLAY");
        environment.insert("QT_QPA_PLATFORM", "xcb");
        environment.insert("HOME", home_.path());
        for (const char* variable :
             {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"}) {
            environment.remove(variable);
        }
        QVERIFY(QDir(home_.path()).mkdir("runtime"));
        QVERIFY(QFile::setPermissions(home_.filePath("runtime"), QFileDevice::ReadOwner |
                                                                     QFileDevice::WriteOwner |
                                                                     QFileDevice::ExeOwner));
        environment.insert("XDG_RUNTIME_DIR", home_.filePath("runtime"));
        environment.insert("LANG", "C.UTF-8");
        // A leak inside a system library is not the program's; its own leaks still fail the run.
        const QString leaks = "suppressions=" QUODDLE_LEAK_SUPPRESSIONS ":print_suppressions=0";
        const QString options = environment.value("LSAN_OPTIONS");
        environment.insert("LSAN_OPTIONS", options.isEmpty() ? leaks : options + ":" + leaks);
        QProcess demo;
        demo.setProcessEnvironment(environment);
        demo.setProcessChannelMode(QProcess::MergedChannels);
        demo.start(QUODDLE_DEMO_BINARY, {path});
        QVERIFY(demo.waitForStarted(5000));
        const auto output = [&demo] { return QString::fromUtf8(demo.readAll()); };

        const QString editor = window("^fruit\\.txt", 60);
        QVERIFY2(!editor.isEmpty(), qPrintable(output()));
        QCOMPARE(titleOf(editor), QString::fromUtf8("fruit.txt — Quoddle Demo"));
        QVERIFY(xdotool({"windowfocus", "--sync", editor}));
        const auto keys = [this](const QStringList& names) {
            return xdotool(QStringList{"key", "--delay", "50"} + names).has_value();
        };
        const auto saved = [&path](const QByteArray& expected) {
            return waitFor([&] { return contentsOf(path) == expected; }, 10);
        };
        const auto modified = [&] { return titleOf(editor).startsWith("fruit.txt*"); };

        // The three lines below the first, selected with the keyboard up to the end of the third
        // (sorting drops a terminator the selection ends with) and sorted with F9.
        QVERIFY(keys({"ctrl+Home", "Down", "shift+Down", "shift+Down", "shift+End", "F9"}));
        QVERIFY2(waitFor(modified, 10), qPrintable(titleOf(editor)));
        QVERIFY(keys({"ctrl+s"}));
        QVERIFY2(saved("zebra\napple\ncherry\npear\n"), contentsOf(path).constData());
        QVERIFY(waitFor([&] { return !modified(); }, 10));

        // One undo takes the whole sort back.
        QVERIFY(keys({"ctrl+z", "ctrl+s"}));
        QVERIFY2(saved(original), contentsOf(path).constData());

        // Ctrl+, opens the preferences window, showing its first pane, General; pressed again in
        // the editor, it brings back the same window.
        QVERIFY(keys({"ctrl+comma"}));
        const QString preferences = window("^General");
        QVERIFY2(!preferences.isEmpty(), qPrintable(output()));
        QVERIFY(xdotool({"windowfocus", "--sync", editor}));
        QVERIFY(keys({"ctrl+comma"}));
        QTest::qWait(500);
        QCOMPARE(xdotool({"search", "--onlyvisible", "--name", "^General"}),
                 std::optional(preferences));

        // Quit from the editor's window; the program ends on its own.
        QVERIFY(xdotool({"windowfocus", "--sync", editor}));
        QVERIFY(keys({"ctrl+q"}));
        QVERIFY2(demo.waitForFinished(20'000), qPrintable(output()));
        const QString said = output();
        QVERIFY2(demo.exitStatus() == QProcess::NormalExit && demo.exitCode() == 0,
                 qPrintable(QString("exit code %1: %2").arg(demo.exitCode()).arg(said)));
        QCOMPARE(contentsOf(path), original);
    }
};

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    if (QStandardPaths::findExecutable("Xvfb").isEmpty()) {
        std::fprintf(stderr, "demo_end_to_end_tests: Xvfb is not installed; skipped\n");
        return skipped;
    }
    DemoEndToEndTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "DemoEndToEndTests.moc"
