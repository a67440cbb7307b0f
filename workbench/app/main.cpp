#include "app/application.h"

int main(int argc, char** argv)
{
    return workbench::runWorkbench(argc, argv);
}
