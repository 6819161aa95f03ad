#include "app/VantleApp.h"

int main(int argc, char* argv[]) {
    vantle::VantleApp app;
    return app.run(argc, argv);
}
