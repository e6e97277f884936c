#pragma once

/// The int that `work` throws; 0 when it throws nothing.
template <class Work>
int ThrownInt(Work work) {
    try {
        work();
        return 0;
    } catch (int thrown) {
        return thrown;
    }
}
