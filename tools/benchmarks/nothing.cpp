#include <QCoreApplication>

/// The least that a program with Qt does: what a start is compared with.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return 0;
}
