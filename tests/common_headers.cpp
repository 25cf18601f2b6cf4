// The owner of the test programs' precompiled header; it has nothing of its own to run.
int main() {
    return 0;
}
