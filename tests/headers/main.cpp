// SPDX-License-Identifier: MIT
// Each translation unit of this program includes the library's headers in another place and calls by plain names. That
// it builds is most of the test; the rest is that all see one table, and that calls without it only report.
#include <QString>
#include <QStringList>

#include <cstdio>

void* clearPointerAfterSystemHeaders();
void* clearPointerBeforeSystemHeaders();
void* clearPointerAfterQtHeaders();
void* clearPointerBeforeQtHeaders();

namespace
{

QStringList& reports()
{
    static QStringList list;
    return list;
}

void keepReport(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    // In front of the words stand the file and the line.
    reports().append((QtCriticalMsg == type ? QString() : QStringLiteral("not critical: ")) +
                     text.mid(text.indexOf(QStringLiteral("] ")) + 2));
}

struct Unit
{
    const char* name;
    void* (*clearPointer)();
    // The calls that it makes, in their order.
    QStringList calls;
};

bool onlyReports(const Unit& unit)
{
    QStringList expected;
    for (const QString& call : unit.calls)
        expected.append(QStringLiteral("OpenGL function '%1' is not available").arg(call));
    if (reports() == expected)
        return true;
    std::printf("%s reports\n%s\nin place of\n%s\n", unit.name, qPrintable(reports().join(u'\n')),
                qPrintable(expected.join(u'\n')));
    return false;
}

} // namespace

int main()
{
    // The reports come with the library's logging, which the environment may have switched off.
    qputenv("VRK_ENABLE_LOGGING", "1");
    qInstallMessageHandler(keepReport);
    const QString clear = QStringLiteral("glClear");
    const QString deleteSync = QStringLiteral("glDeleteSync");
    const Unit units[] = {
        {"after the system's headers",
         clearPointerAfterSystemHeaders,
         {clear, deleteSync, QStringLiteral("glWaitSync")}},
        {"before the system's headers", clearPointerBeforeSystemHeaders, {clear, deleteSync}},
        {"after Qt's headers", clearPointerAfterQtHeaders, {clear}},
        {"before Qt's headers", clearPointerBeforeQtHeaders, {clear}},
    };
    void* const pointer = clearPointerAfterQtHeaders();
    bool good = nullptr != pointer;
    for (const Unit& unit : units)
    {
        reports().clear();
        if (unit.clearPointer() != pointer)
        {
            std::printf("%s there is another table\n", unit.name);
            good = false;
        }
        good = onlyReports(unit) && good;
    }
    qInstallMessageHandler(nullptr);
    std::puts(good ? "one table, and calls without it only report" : "the units disagree");
    return good ? 0 : 1;
}
