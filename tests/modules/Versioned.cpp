// A program, and a module to load, that have a version record and nothing else.
int main() { return 0; }
