#include "imaging/row_painter.h"

#include <algorithm>
#include <cstring>

#include "imaging/kernels/pixel_ops.h"

namespace skarnel {
namespace {

using kernels::multiply255;

std::uint8_t saturated(int value) {
    return static_cast<std::uint8_t>(std::min(value, 255));
}

void paintWhole(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels,
                CompositeOperation operation) {
    switch (operation) {
        case CompositeOperation::Copy:
            std::memcpy(target, source, 4 * pixels);
            return;
        case CompositeOperation::SourceOver:
            kernels::overRow(target, source, pixels);
            return;
        case CompositeOperation::DestinationIn:
            for (std::size_t i = 0; i < pixels; ++i)
                kernels::scalar::scaleRow(target + 4 * i, target + 4 * i, source[4 * i + 3], 1);
            return;
    }
}

void paintPartly(std::uint8_t* target, const std::uint8_t* source, std::uint8_t covered,
                 CompositeOperation operation) {
    const auto uncovered = static_cast<std::uint8_t>(255 - covered);
    switch (operation) {
        case CompositeOperation::Copy:
            for (int k = 0; k < 4; ++k)
                target[k] =
                    saturated(multiply255(source[k], covered) + multiply255(target[k], uncovered));
            return;
        case CompositeOperation::SourceOver: {
            std::uint8_t part[4];
            kernels::scalar::scaleRow(part, source, covered, 1);
            kernels::scalar::overRow(target, part, 1);
            return;
        }
        case CompositeOperation::DestinationIn: {
            const auto kept = saturated(multiply255(source[3], covered) + uncovered);
            kernels::scalar::scaleRow(target, target, kept, 1);
            return;
        }
    }
}

}  // namespace

void paintRow(std::uint8_t* target, const std::uint8_t* source, const std::uint8_t* mask,
              std::size_t pixels, CompositeOperation operation) {
    if (mask == nullptr) return paintWhole(target, source, pixels, operation);
    std::size_t i = 0;
    while (i < pixels) {
        std::size_t end = i;
        while (end < pixels && mask[end] == 255) ++end;
        paintWhole(target + 4 * i, source + 4 * i, end - i, operation);
        for (i = end; i < pixels && mask[i] != 255; ++i)
            if (mask[i] != 0) paintPartly(target + 4 * i, source + 4 * i, mask[i], operation);
    }
}

}  // namespace skarnel
