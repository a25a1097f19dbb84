// The headers that tests/CMakeLists.txt has precompiled are all there is to compile here.
