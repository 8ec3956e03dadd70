// Carries a precompiled header (Precompiled.cmake); it has no code.
