// orbisk: the two-pane file manager.
#include "Startup.h"

int main(int argc, char** argv)
{
    return orbisk::Startup::run(argc, argv);
}
