// orbisk: the two-pane file manager.
#include <QApplication>
#include <QLabel>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QLabel label("Orbisk");
    label.show();
    return app.exec();
}
