// Carries the precompiled header of the test programs; it has no code.
