// A module without a program: CMake wants a source for what it links.
