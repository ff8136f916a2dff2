// SPDX-License-Identifier: GPL-3.0-or-later
// The plug-in framework: the three event channels, and the life cycle over
// the test plug-ins built next to this test (good ones with dependencies, and
// libraries that must be refused).
#include <hpf/event/event.h>
#include <hpf/event/eventdefaults.h>
#include <hpf/lifecycle.h>
#include <hpf/listener.h>
#include <hpf/plugin.h>

#include <QAtomicInt>
#include <QMutex>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>
#include <QtTest>

using hpf::PluginMetaObject;

namespace {

const QString kSpace = QStringLiteral("hpftest");

// Receivers of every shape the channels must adapt.
class Receiver : public QObject
{
    Q_OBJECT
public:
    QStringList calls;

    int add(int a, int b)
    {
        calls << QStringLiteral("add");
        return a + b;
    }
    void noReturn(const QString &text) { calls << text; }
    bool fillName(const QUrl &url, QString *name)
    {
        *name = url.fileName();
        return true;
    }
    bool addEmblems(const QUrl &, QList<QIcon> *icons)
    {
        icons->append(QIcon());
        icons->append(QIcon());
        return true;
    }
    QString objectNameOf(QObject *obj) { return obj ? obj->objectName() : QStringLiteral("null"); }
    int timerInterval(QTimer *timer) { return timer ? timer->interval() : -1; }
    bool urlOnly(const QUrl &url)
    {
        calls << QStringLiteral("1:") + url.path();
        return false;
    }
    bool urlAndFlag(const QUrl &url, bool flag)
    {
        calls << QStringLiteral("2:%1:%2").arg(url.path(), flag ? QStringLiteral("true") : QStringLiteral("false"));
        return false;
    }
};

void expectWarning(const QString &pattern)
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(pattern));
}

template <class F> hpf::Invoker invoker(F func)
{
    return hpf::makeInvoker(std::move(func), QStringLiteral("test"));
}

// "a,b c" -> {"a", "b c"}
QStringList list(const char *items)
{
    return QString::fromUtf8(items).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

// Off-main-thread warnings, counted per text.
QMutex g_threadWarningsLock;
QMap<QString, int> g_threadWarnings;
QtMessageHandler g_previousHandler = nullptr;

void countThreadWarnings(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!message.startsWith(QLatin1String("[Event Thread]: "))) {
        g_previousHandler(type, context, message);
        return;
    }
    QMutexLocker locker(&g_threadWarningsLock);
    ++g_threadWarnings[message];
}

}   // namespace

class TestHpf : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_timer.setObjectName(QStringLiteral("the timer"));
        m_timer.setInterval(250);
        QVERIFY(QDir(QStringLiteral(HPFTEST_PLUGIN_DIR)).exists());
        hpf::channel()->connect(QStringLiteral("hpftest"), QStringLiteral("slot_Record"),
            [this](const QString &what) { m_records.append(what); });
        hpf::LifeCycle::setPluginPaths(
            {QStringLiteral(HPFTEST_PLUGIN_DIR), QStringLiteral(HPFTEST_PLUGIN_DIR "/does-not-exist")});
        hpf::LifeCycle::setBlackList({QStringLiteral("test-blacklisted")});
    }
    void init()
    {
        m_channel.reset(new hpf::EventChannelManager);
        m_dispatcher.reset(new hpf::EventDispatcherManager);
        m_sequence.reset(new hpf::EventSequenceManager);
        m_receiver.reset(new Receiver);
    }

    void pushConvertsArguments_data()
    {
        QTest::addColumn<QString>("topic");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<QVariant>("expected");
        QTest::addColumn<QString>("warning");

        auto refused = [](const char *why) -> QString {
            return QStringLiteral("^Event receiver hpftest::slot_Add refused the call: ") + QLatin1String(why);
        };
        const QVariant timer = QVariant::fromValue(&m_timer);
        const QVariant timerAsObject = QVariant::fromValue(static_cast<QObject *>(&m_timer));
        const QVariant noTimer = QVariant::fromValue(static_cast<QTimer *>(nullptr));
        // clang-format off
        QTest::newRow("two ints") << "slot_Add" << QVariantList {2, 3} << QVariant(5) << "";
        QTest::newRow("string converted to int") << "slot_Add" << QVariantList {QStringLiteral("40"), 2} << QVariant(42) << "";
        QTest::newRow("void member gives invalid") << "slot_NoReturn" << QVariantList {QStringLiteral("x")} << QVariant() << "";
        QTest::newRow("lambda") << "slot_Lambda" << QVariantList {QUrl(QStringLiteral("file:///a/b.txt"))} << QVariant(QStringLiteral("b.txt")) << "";
        QTest::newRow("unknown topic") << "slot_Nobody" << QVariantList {1} << QVariant() << "";
        QTest::newRow("too many arguments") << "slot_Add" << QVariantList {1, 2, 3} << QVariant() << refused("it takes 2 argument\\(s\\), 3 given$");
        QTest::newRow("unconvertible type") << "slot_Add" << QVariantList {QUrl(QStringLiteral("file:///x")), 1} << QVariant() << refused("argument 0 is QUrl and cannot become int$");
        QTest::newRow("invalid argument") << "slot_Add" << QVariantList {1, QVariant()} << QVariant() << refused("argument 1 is an invalid value");
        // Object pointers convert along the class hierarchy, both ways.
        QTest::newRow("derived to base parameter") << "slot_ObjectName" << QVariantList {timer} << QVariant(QStringLiteral("the timer")) << "";
        QTest::newRow("base pointer to derived parameter") << "slot_Interval" << QVariantList {timerAsObject} << QVariant(250) << "";
        QTest::newRow("null object pointer") << "slot_Interval" << QVariantList {noTimer} << QVariant(-1) << "";
        QTest::newRow("object of another class") << "slot_Interval" << QVariantList {QVariant::fromValue(&m_plain)} << QVariant() << "slot_Interval refused the call: argument 0 is QObject\\*";
        // clang-format on
    }
    void pushConvertsArguments()
    {
        QFETCH(QString, topic);
        QFETCH(QVariantList, args);
        QFETCH(QVariant, expected);
        QFETCH(QString, warning);

        Receiver *r = m_receiver.get();
        QVERIFY(m_channel->connect(kSpace, QStringLiteral("slot_Add"), r, &Receiver::add));
        QVERIFY(m_channel->connect(kSpace, QStringLiteral("slot_NoReturn"), r, &Receiver::noReturn));
        QVERIFY(
            m_channel->connect(kSpace, QStringLiteral("slot_Lambda"), [](const QUrl &url) { return url.fileName(); }));
        QVERIFY(m_channel->connect(kSpace, QStringLiteral("slot_ObjectName"), r, &Receiver::objectNameOf));
        QVERIFY(m_channel->connect(kSpace, QStringLiteral("slot_Interval"), r, &Receiver::timerInterval));

        if (!warning.isEmpty())
            expectWarning(warning);
        const QVariant result = m_channel->pushList(kSpace, topic, args);
        QCOMPARE(result.isValid(), expected.isValid());
        QCOMPARE(result, expected);
        if (!warning.isEmpty())
            QVERIFY(r->calls.isEmpty());
    }

    void pushReachesNewestReceiver()
    {
        const QString topic = QStringLiteral("slot_Value");
        QVERIFY(m_channel->connect(kSpace, topic, [] { return 1; }));
        QVERIFY(m_channel->connect(kSpace, topic, [] { return 2; }));
        QCOMPARE(m_channel->push(kSpace, topic), QVariant(2));
        expectWarning(QStringLiteral("EventChannelManager::connect: refused an empty space"));
        QVERIFY(!m_channel->connectInvoker(QString(), topic, [](const QVariantList &) { return QVariant(); }));
    }

    void outArgumentsReachReceiver()
    {
        Receiver *r = m_receiver.get();
        m_channel->connect(kSpace, QStringLiteral("slot_FillName"), r, &Receiver::fillName);
        m_channel->connect(kSpace, QStringLiteral("slot_Emblems"), r, &Receiver::addEmblems);

        QString name;
        QCOMPARE(
            m_channel->push(kSpace, QStringLiteral("slot_FillName"), QUrl(QStringLiteral("file:///d/x.txt")), &name),
            QVariant(true));
        QCOMPARE(name, QStringLiteral("x.txt"));

        QList<QIcon> icons {QIcon()};
        QCOMPARE(m_channel->push(kSpace, QStringLiteral("slot_Emblems"), QUrl(), &icons), QVariant(true));
        QCOMPARE(icons.size(), 3);

        // A pointer of the wrong kind is refused, the target left alone.
        expectWarning(QStringLiteral("slot_Emblems refused the call: argument 1 is QString\\*"));
        QVERIFY(!m_channel->push(kSpace, QStringLiteral("slot_Emblems"), QUrl(), &name).isValid());
        QCOMPARE(name, QStringLiteral("x.txt"));
    }

    void destroyedReceiverIsRefused()
    {
        auto *r = new Receiver;
        m_channel->connect(kSpace, QStringLiteral("slot_Gone"), r, &Receiver::add);
        m_dispatcher->subscribe(77, r, &Receiver::noReturn);
        QCOMPARE(m_channel->push(kSpace, QStringLiteral("slot_Gone"), 1, 1), QVariant(2));
        delete r;

        expectWarning(
            QStringLiteral("^Event receiver hpftest::slot_Gone refused the call: its object has been destroyed$"));
        QVERIFY(!m_channel->push(kSpace, QStringLiteral("slot_Gone"), 1, 1).isValid());
        expectWarning(QStringLiteral("^Event receiver 77 refused the call: its object has been destroyed$"));
        QVERIFY(m_dispatcher->publish(77, QStringLiteral("x")));
    }

    void publishRunsFiltersThenListeners_data()
    {
        QTest::addColumn<QString>("global");   // "none", "false" or "true"
        QTest::addColumn<QList<bool>>("filters");
        QTest::addColumn<QStringList>("expectedCalls");
        QTest::addColumn<bool>("expectedResult");

        QTest::newRow("no filters") << "none" << QList<bool>() << list("l0,l1") << true;
        QTest::newRow("filters let it pass") << "false" << QList<bool> {false, false} << list("g,f0,f1,l0,l1") << true;
        QTest::newRow("first filter consumes") << "false" << QList<bool> {true, false} << list("g,f0") << false;
        QTest::newRow("global filter consumes first") << "true" << QList<bool> {true, true} << list("g") << false;
    }
    void publishRunsFiltersThenListeners()
    {
        QFETCH(QString, global);
        QFETCH(QList<bool>, filters);

        const hpf::EventType type = 1;
        const QUrl url(QStringLiteral("file:///tmp"));
        QStringList calls;
        // Listeners first, so that order of installation cannot fake the result.
        for (int i = 0; i < 2; ++i) {
            m_dispatcher->subscribeInvoker(type, this, invoker([&calls, i, url](quint64 id, const QUrl &given) {
                QCOMPARE(id, quint64(9));
                QCOMPARE(given, url);
                calls << QStringLiteral("l%1").arg(i);
            }));
        }
        for (int i = 0; i < filters.size(); ++i) {
            const bool consume = filters.at(i);
            m_dispatcher->installFilterInvoker(type, this, invoker([&calls, i, consume](quint64, const QUrl &) {
                calls << QStringLiteral("f%1").arg(i);
                return consume;
            }));
        }
        if (global != QLatin1String("none")) {
            const bool consume = global == QLatin1String("true");
            // Global filters get the type and the arguments as published.
            m_dispatcher->installGlobalFilterInvoker(
                this, invoker([&calls, consume, url](hpf::EventType t, const QVariantList &args) {
                    const bool seen = t == 1 && args == QVariantList {quint64(9), url};
                    calls << (seen ? QStringLiteral("g") : QStringLiteral("g, other arguments"));
                    return consume;
                }));
        }

        QTEST(m_dispatcher->publish(type, quint64(9), url), "expectedResult");
        QTEST(calls, "expectedCalls");
    }

    void unsubscribeByOwner()
    {
        Receiver a;
        Receiver b;
        QVERIFY(m_dispatcher->subscribe(5, &a, &Receiver::noReturn));
        QVERIFY(m_dispatcher->subscribe(5, &b, &Receiver::noReturn));
        QVERIFY(m_dispatcher->publish(5, QStringLiteral("hello")));
        QCOMPARE(a.calls, QStringList {QStringLiteral("hello")});

        QVERIFY(m_dispatcher->unsubscribe(5, &a));
        QVERIFY(!m_dispatcher->unsubscribe(5, &a));
        QVERIFY(!m_dispatcher->unsubscribe(99, &a));
        m_dispatcher->publish(5, QStringLiteral("x"));
        QCOMPARE(a.calls.size(), 1);
        QCOMPARE(b.calls, list("hello,x"));
    }

    void trailingDefaultsServeEveryForm_data()
    {
        QTest::addColumn<bool>("declared");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<QStringList>("expectedCalls");
        QTest::addColumn<QStringList>("warnings");

        const QUrl url(QStringLiteral("file:///x"));
        const QString refused
            = QStringLiteral("^Event receiver 2 refused the call: it takes %1 argument\\(s\\), %2 given$");
        // clang-format off
        QTest::newRow("short form fills the default") << true << QVariantList {url} << list("1:/x,2:/x:false,raw:2") << QStringList();
        QTest::newRow("more than the long form is refused") << true << QVariantList {url, true, 3} << list("raw:3") << QStringList {refused.arg(1).arg(3), refused.arg(2).arg(3)};
        QTest::newRow("fewer than the leading ones is refused") << true << QVariantList() << list("raw:0") << QStringList {refused.arg(1).arg(0), refused.arg(2).arg(0)};
        // A refused receiver does not stop the others.
        QTest::newRow("undeclared event is strict") << false << QVariantList {url} << list("1:/x,raw:1") << QStringList {refused.arg(2).arg(1)};
        // clang-format on
    }
    void trailingDefaultsServeEveryForm()
    {
        QFETCH(bool, declared);
        QFETCH(QVariantList, args);
        QFETCH(QStringList, warnings);

        if (declared)
            hpf::declareTrailingDefaults(m_dispatcher.get(), 2, 1, QVariantList {false});
        QVERIFY(m_dispatcher->installEventFilter(2, m_receiver.get(), &Receiver::urlOnly));
        QVERIFY(m_dispatcher->installEventFilter(2, m_receiver.get(), &Receiver::urlAndFlag));
        // An invoker that takes any list gets the long form.
        QStringList &calls = m_receiver->calls;
        m_dispatcher->subscribeInvoker(2, this, [&calls](const QVariantList &given) {
            calls << QStringLiteral("raw:%1").arg(given.size());
            return QVariant();
        });
        for (const QString &warning : warnings)
            expectWarning(warning);
        QVERIFY(m_dispatcher->publishList(2, args));
        QTEST(m_receiver->calls, "expectedCalls");
    }

    void reentrantCallsFromReceivers()
    {
        // Receivers publish, push, subscribe and follow while a call is running;
        // none of that may deadlock on the tables' locks.
        QStringList calls;
        m_sequence->declare(kSpace, QStringLiteral("hook_Inner"));
        m_channel->connect(kSpace, QStringLiteral("slot_Inner"), [&calls](int depth) {
            calls << QStringLiteral("slot %1").arg(depth);
            return depth;
        });
        m_dispatcher->subscribeInvoker(
            11, this, invoker([&calls](int depth) { calls << QStringLiteral("inner %1").arg(depth); }));
        m_dispatcher->subscribeInvoker(10, this, invoker([&, this](int depth) {
            calls << QStringLiteral("outer %1").arg(depth);
            m_dispatcher->publish(11, depth);
            m_channel->push(kSpace, QStringLiteral("slot_Inner"), depth);
            m_sequence->followInvoker(kSpace, QStringLiteral("hook_Inner"), this, [&calls](const QVariantList &) {
                calls << QStringLiteral("hook");
                return QVariant(false);
            });
            m_sequence->run(kSpace, QStringLiteral("hook_Inner"));
            // Added during the publish: runs from the next publish on.
            m_dispatcher->subscribeInvoker(
                10, this, invoker([&calls](int d) { calls << QStringLiteral("late %1").arg(d); }));
            if (depth == 0)
                m_dispatcher->publish(10, depth + 1);
        }));

        QVERIFY(m_dispatcher->publish(10, 0));
        QCOMPARE(calls, list("outer 0,inner 0,slot 0,hook,outer 1,inner 1,slot 1,hook,hook,late 1"));
    }

    void runStopsAtFirstTrue_data()
    {
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<int>("expectedCalls");
        QTest::addColumn<bool>("expectedResult");

        QTest::newRow("no followers") << QList<bool>() << 0 << false;
        QTest::newRow("nobody handles") << QList<bool> {false, false} << 2 << false;
        QTest::newRow("first handles") << QList<bool> {true, false} << 1 << true;
        QTest::newRow("last handles") << QList<bool> {false, false, true} << 3 << true;
    }
    void runStopsAtFirstTrue()
    {
        QFETCH(QList<bool>, answers);

        const QString hook = QStringLiteral("hook_Answer");
        QVERIFY(m_sequence->declare(kSpace, hook));
        int calls = 0;
        for (bool answer : qAsConst(answers)) {
            QVERIFY(m_sequence->followInvoker(kSpace, hook, this, invoker([&calls, answer](const QString &) {
                ++calls;
                return answer;
            })));
        }
        QTEST(m_sequence->run(kSpace, hook, QStringLiteral("arg")), "expectedResult");
        QTEST(calls, "expectedCalls");

        QCOMPARE(m_sequence->unfollow(kSpace, hook, this), !answers.isEmpty());
        QVERIFY(!m_sequence->run(kSpace, hook, QStringLiteral("arg")));
    }

    void followUndeclaredHookWarns()
    {
        Receiver r;
        expectWarning(QStringLiteral("^EventSequenceManager::follow: invalid topic hpftest::hook_Missing"));
        QVERIFY(!m_sequence->follow(kSpace, QStringLiteral("hook_Missing"), &r, &Receiver::fillName));
        QVERIFY(!m_sequence->run(kSpace, QStringLiteral("hook_Missing"), QUrl(), static_cast<QString *>(nullptr)));

        // Declaring twice keeps the followers, which fill out-arguments.
        QVERIFY(m_sequence->declare(kSpace, QStringLiteral("hook_Twice")));
        QVERIFY(m_sequence->follow(kSpace, QStringLiteral("hook_Twice"), &r, &Receiver::fillName));
        QVERIFY(m_sequence->declare(kSpace, QStringLiteral("hook_Twice")));
        QString name;
        QVERIFY(m_sequence->run(kSpace, QStringLiteral("hook_Twice"), QUrl(QStringLiteral("file:///n")), &name));
        QCOMPARE(name, QStringLiteral("n"));
    }

    void concurrentSubscribeAndPublish()
    {
        // Workers add receivers and call all three channels at once; every call
        // must arrive and be reported as off the GUI thread exactly once.
        constexpr int kThreads = 4;
        constexpr int kRounds = 200;
        QAtomicInt listened;
        QAtomicInt pushed;
        QAtomicInt followed;
        m_sequence->declare(kSpace, QStringLiteral("hook_Busy"));
        m_channel->connect(kSpace, QStringLiteral("slot_Busy"), [&pushed](int) { pushed.ref(); });

        g_threadWarnings.clear();
        g_previousHandler = qInstallMessageHandler(countThreadWarnings);
        std::vector<std::unique_ptr<QThread>> workers;
        for (int t = 0; t < kThreads; ++t) {
            workers.emplace_back(QThread::create([&, t] {
                const hpf::EventType type = 500 + t;
                for (int i = 0; i < kRounds; ++i) {
                    m_dispatcher->subscribeInvoker(type, this, invoker([&listened](int) { listened.ref(); }));
                    m_sequence->followInvoker(
                        kSpace, QStringLiteral("hook_Busy"), this, [&followed](const QVariantList &) {
                            followed.ref();
                            return QVariant(true);
                        });
                    m_dispatcher->publish(type, i);
                    m_channel->push(kSpace, QStringLiteral("slot_Busy"), i);
                    m_sequence->run(kSpace, QStringLiteral("hook_Busy"), i);
                }
            }));
            workers.back()->start();
        }
        for (auto &worker : workers)
            QVERIFY(worker->wait(60000));
        qInstallMessageHandler(g_previousHandler);

        // Round i of a thread publishes to i + 1 listeners of its own event.
        QCOMPARE(listened.loadRelaxed(), kThreads * kRounds * (kRounds + 1) / 2);
        QCOMPARE(pushed.loadRelaxed(), kThreads * kRounds);
        QCOMPARE(followed.loadRelaxed(), kThreads * kRounds);
        QMap<QString, int> expected;
        const QString prefix = QStringLiteral("[Event Thread]: The event call does not run in the main thread: ");
        for (int t = 0; t < kThreads; ++t)
            expected.insert(prefix + QString::number(500 + t), kRounds);
        expected.insert(prefix + QStringLiteral("hpftest::slot_Busy"), kThreads * kRounds);
        expected.insert(prefix + QStringLiteral("hpftest::hook_Busy"), kThreads * kRounds);
        QCOMPARE(g_threadWarnings, expected);
    }

    void readRefusesBrokenLibraries()
    {
        for (const char *refusal : {"e_otheriid\\.so - interface id \"org\\.example\\.other\\.plugin\" is not "
                                    "\"org\\.sablo\\.plugin\\.filemanager\"$",
                 "f_noname\\.so - .*no \"Name\"$", "g_dependsstring\\.so - \"Depends\" is not a list$",
                 "p_plain\\.so - no plug-in metadata$",
                 "z_duplicate\\.so - the name test-core is already taken by .*hpftest_b_core\\.so$"})
            expectWarning(QStringLiteral("^LifeCycle::readPlugins: refused .*hpftest_") + QLatin1String(refusal));

        QVERIFY(hpf::LifeCycle::readPlugins());

        QStringList names;
        for (const hpf::PluginMetaObjectPointer &meta : hpf::LifeCycle::pluginMetaObjs()) {
            names.append(meta->name());
            QCOMPARE(meta->pluginState(), PluginMetaObject::kRead);
            QVERIFY(!meta->plugin());
        }
        const QStringList expected = list("test-dependent,test-core,test-leaf,test-nostart,test-missingdep,"
                                          "test-cycle-a,test-cycle-b,test-oncycle,test-tooold,test-unresolved,"
                                          "test-needsunresolved");
        QCOMPARE(names, expected);
        // No plug-in object may exist before loading.
        QVERIFY(m_records.isEmpty());

        // Reading again adds nothing and warns about nothing new.
        QVERIFY(hpf::LifeCycle::readPlugins());
        QCOMPARE(hpf::LifeCycle::pluginMetaObjs().size(), expected.size());
    }

    void dependenciesAreObjectsOrNames()
    {
        // The version a dependency asks for is checked at loading ("test-tooold").
        for (const char *nameAndDepends : {"test-dependent,test-core@1.1.0", "test-leaf,test-dependent@"}) {
            const QStringList expected = list(nameAndDepends);
            QStringList depends;
            for (const PluginMetaObject::Depend &dep : hpf::LifeCycle::pluginMetaObj(expected.first())->depends())
                depends.append(dep.name + QLatin1Char('@') + dep.version);
            QCOMPARE(depends, expected.mid(1));
        }
    }

    void lookupByNameAndVersion_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("found");

        QTest::newRow("any version") << "test-core" << QString() << true;
        QTest::newRow("exact version") << "test-core" << QStringLiteral("1.2.0") << true;
        QTest::newRow("other version") << "test-core" << QStringLiteral("1.0.0") << false;
        QTest::newRow("unknown name") << "test-nobody" << QString() << false;
        QTest::newRow("refused at reading") << "test-otheriid" << QString() << false;
        QTest::newRow("black-listed") << "test-blacklisted" << QString() << false;
        QTest::newRow("empty name") << QString() << QString() << false;
    }
    void lookupByNameAndVersion()
    {
        QFETCH(QString, name);
        QFETCH(QString, version);
        QFETCH(bool, found);
        const hpf::PluginMetaObjectPointer meta = hpf::LifeCycle::pluginMetaObj(name, version);
        QCOMPARE(!meta.isNull(), found);
        if (found)
            QCOMPARE(meta->name(), name);
    }

    void loadStartsDependenciesFirst()
    {
        // Name and reason (a pattern) of each plug-in refused at loading.
        const QList<QPair<const char *, const char *>> refused {{"test-missingdep", "missing dependency test-absent"},
            {"test-tooold", "dependency test-core has version 1\\.2\\.0, 2\\.0\\.0 is needed"},
            {"test-cycle-a", "circular dependency"}, {"test-cycle-b", "circular dependency"},
            {"test-oncycle", "circular dependency"}, {"test-unresolved", ".*hpftest_symbol_nobody_defines.*"},
            {"test-needsunresolved", "dependency test-unresolved could not be loaded"}};
        for (const auto &plugin : refused)
            expectWarning(QStringLiteral("^LifeCycle::loadPlugins: refused %1 - %2$")
                              .arg(QLatin1String(plugin.first), QLatin1String(plugin.second)));
        expectWarning(QStringLiteral("^LifeCycle::loadPlugins: plug-in test-nostart failed to start$"));

        QSignalSpy started(hpf::Listener::instance(), &hpf::Listener::pluginStarted);
        QSignalSpy allStarted(hpf::Listener::instance(), &hpf::Listener::pluginsStarted);
        QVERIFY(!hpf::LifeCycle::loadPlugins());

        // Every plug-in is initialised before any starts.
        const QString records = m_records.join(QLatin1Char(' '));
        QVERIFY2(records.lastIndexOf(QLatin1String("init:")) < records.indexOf(QLatin1String("start:")),
            qPrintable(records));
        const QStringList order = startOrder();
        QCOMPARE(order.size(), 4);
        QVERIFY(order.contains(QStringLiteral("test-nostart")));
        QVERIFY(order.indexOf(QStringLiteral("test-core")) < order.indexOf(QStringLiteral("test-dependent")));
        QVERIFY(order.indexOf(QStringLiteral("test-dependent")) < order.indexOf(QStringLiteral("test-leaf")));

        // pluginStarted follows each successful start, in start order.
        QStringList announced;
        for (const QList<QVariant> &args : qAsConst(started)) {
            QCOMPARE(args.at(0).toString(), QStringLiteral(HPF_PLUGIN_IID));
            announced.append(args.at(1).toString());
        }
        QStringList expected = order;
        expected.removeAll(QStringLiteral("test-nostart"));
        QCOMPARE(announced, expected);
        QCOMPARE(allStarted.size(), 1);

        // The meta objects follow the load order and tell what became of each.
        QStringList listed;
        for (const hpf::PluginMetaObjectPointer &meta : hpf::LifeCycle::pluginMetaObjs()) {
            if (meta->pluginState() >= PluginMetaObject::kInitialized)
                listed.append(meta->name());
            QCOMPARE(meta->plugin() != nullptr, meta->pluginState() >= PluginMetaObject::kLoaded);
        }
        QCOMPARE(listed, order);
        QCOMPARE(hpf::LifeCycle::pluginMetaObj(QStringLiteral("test-core"))->pluginState(), PluginMetaObject::kStarted);
        const auto noStart = hpf::LifeCycle::pluginMetaObj(QStringLiteral("test-nostart"));
        QCOMPARE(noStart->pluginState(), PluginMetaObject::kInitialized);
        QCOMPARE(noStart->errorString(), QStringLiteral("start() returned false"));
        for (const auto &plugin : refused) {
            const auto meta = hpf::LifeCycle::pluginMetaObj(QLatin1String(plugin.first));
            QCOMPARE(meta->pluginState(), PluginMetaObject::kInvalid);
            const QRegularExpression reason(QStringLiteral("^%1$").arg(QLatin1String(plugin.second)));
            QVERIFY2(reason.match(meta->errorString()).hasMatch(), qPrintable(meta->errorString()));
        }

        // Loading again does nothing.
        const int recordCount = m_records.size();
        started.clear();
        QVERIFY(hpf::LifeCycle::loadPlugins());
        QCOMPARE(started.size(), 0);
        QCOMPARE(m_records.size(), recordCount);
    }

    void shutdownStopsInReverseOrder()
    {
        QStringList expected;
        for (const QString &name : startOrder()) {
            if (name != QLatin1String("test-nostart"))
                expected.prepend(QStringLiteral("stop:") + name);
        }
        m_records.clear();
        hpf::LifeCycle::shutdownPlugins();
        QCOMPARE(m_records, expected);
        QCOMPARE(
            hpf::LifeCycle::pluginMetaObj(QStringLiteral("test-core"))->pluginState(), PluginMetaObject::kShutdown);
        QCOMPARE(hpf::LifeCycle::pluginMetaObj(QStringLiteral("test-missingdep"))->pluginState(),
            PluginMetaObject::kInvalid);
    }

private:
    std::unique_ptr<hpf::EventChannelManager> m_channel;
    std::unique_ptr<hpf::EventDispatcherManager> m_dispatcher;
    std::unique_ptr<hpf::EventSequenceManager> m_sequence;
    std::unique_ptr<Receiver> m_receiver;
    QTimer m_timer;
    QObject m_plain;
    QStringList startOrder() const
    {
        QStringList order;
        for (const QString &record : m_records) {
            if (record.startsWith(QLatin1String("start:")))
                order.append(record.mid(6));
        }
        return order;
    }

    QStringList m_records;
};

QTEST_GUILESS_MAIN(TestHpf)
#include "tst_hpf.moc"
