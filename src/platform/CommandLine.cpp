// SPDX-License-Identifier: MIT
#include "platform/CommandLine.h"

#include <QFile>
#include <QFileInfo>

namespace {
constexpr char help[] =
    R"(Usage: kelvo-test-gui [Qt option...] [URL | FILE]
       kelvo-test-gui --help | --version

Interactive test console for the Kelvo media framework.

  URL, FILE  the playlist or medium to play at start, as the last argument
  --help     shows this, as the only argument
  --version  shows the version, as the only argument

Options of Qt: -style, -stylesheet, -platform, -display and others.
The window explains itself (menu Main, Help). Environment variables and files:
man kelvo-test-gui
)";
} // namespace

QByteArray CommandLine::answerTo(int argc, char *argv[])
{
    const QByteArray argument(argc == 2 ? argv[1] : "");
    if (argument == "--help")
        return help;
    return argument == "--version" ? "kelvo-test-gui " KELVO_VERSION "\n" : QByteArray();
}

QUrl CommandLine::urlOf(const char *argument)
{
    // A name is taken as it is: "#" and "%" mean something in URLs and nothing in names.
    const QFileInfo file(QFile::decodeName(argument));
    if (!file.filePath().isEmpty() && file.exists())
        return QUrl::fromLocalFile(file.absoluteFilePath());
    return QUrl(QString::fromLocal8Bit(argument));
}
