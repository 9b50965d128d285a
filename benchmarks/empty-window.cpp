// SPDX-License-Identifier: MIT
// What any Qt Widgets program costs at least: the reference of the start-up benchmark.
#include <QApplication>
#include <QMainWindow>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(800, 480);
    window.show();
    return QApplication::exec();
}
