set(VESKKIT_SYNTHESIS_SOURCES
    synthesis/Hand.cpp
    synthesis/Shapes.cpp
    synthesis/Stroke.cpp
    synthesis/TraceSynthesizer.cpp)
set(VESKKIT_SYNTHESIS_HEADERS
    synthesis/TraceSynthesizer.h)
