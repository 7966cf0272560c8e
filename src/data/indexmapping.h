#pragma once

#include <vector>

// Mapping between raw positions (in the container) and model positions (with
// the hidden ones taken out), over an ascending list of hidden raw positions.
// Called for every painted cell: bisection, no allocation.
namespace indexmapping {

// Model to raw; negative input gives -1.
inline int rawFromModel(const std::vector<int>& hidden, int model) {
    if (model < 0) return -1;
    // Find the first i with model < hidden[i] - i: the count of visible
    // positions ahead of hidden[i]. The answer is model + i.
    int low = 0, high = int(hidden.size());
    while (low < high) {
        const int mid = (low + high) / 2;
        if (model < hidden[size_t(mid)] - mid)
            high = mid;
        else
            low = mid + 1;
    }
    return model + low;
}

// Raw to model. A hidden position gives -1, or with `nearest` the model
// position just before its hidden block (0 when the block starts the table).
// With `nearest`, a raw position beyond `num_raw` is clamped to the last
// model position.
inline int modelFromRaw(const std::vector<int>& hidden, int raw, bool nearest, int num_raw) {
    if (raw < 0) return -1;
    const int size = int(hidden.size());
    if (nearest && raw >= num_raw) return num_raw - size - 1;
    int low = 0, high = size;
    while (low < high) {
        const int mid = (low + high) / 2;
        if (hidden[size_t(mid)] < raw)
            low = mid + 1;
        else
            high = mid;
    }
    const int i = low;
    if (i == size || hidden[size_t(i)] != raw) return raw - i;
    if (!nearest) return -1;
    int k = i;
    while (k > 0 && hidden[size_t(k - 1)] == hidden[size_t(k)] - 1)
        --k;
    if (k == 0) return hidden[0] - 1 < 0 ? 0 : hidden[0] - 1;
    return hidden[size_t(k)] - k - 1;
}

} // namespace indexmapping
