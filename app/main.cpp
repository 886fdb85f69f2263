// orbisk: the two-pane file manager.
#include "Startup.h"
#include "platform/OpenFileLimit.h"

int main(int argc, char** argv)
{
    // Before any thread starts: deep folder trees and parallel copies need more than 1,024.
    orbisk::OpenFileLimit::raiseToHardLimit();
    return orbisk::Startup::run(argc, argv);
}
