// Linked with one library of the app and its declared dependencies only; see VantleLayers.cmake.
int main() {
    return 0;
}
