#ifndef TUL_TEST_LOADED_COMPONENT_H
#define TUL_TEST_LOADED_COMPONENT_H

#include "LightFramework.h"

namespace TulTest {

/** The built component library, loaded, initialised with management on, and taken down at the end. */
class LoadedComponent {
public:
    explicit LoadedComponent(LightFramework& framework);
    ~LoadedComponent();

    /** Throws when the result is not 0. */
    void start();
    void stop();

    LoadedComponent(const LoadedComponent&) = delete;
    LoadedComponent& operator=(const LoadedComponent&) = delete;

private:
    LightFramework& _framework;
    void* _library;
};

}  // namespace TulTest

#endif
