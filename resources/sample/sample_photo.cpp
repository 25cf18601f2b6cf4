/// Renders the sample picture: mountains in the light of a low sun, traced over
/// a terrain of summed noise. Writes a binary PPM to standard output.
///
/// Usage: sample_photo [WIDTH HEIGHT]      (1600 1200 if not given)
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

struct Vec {
    float x = 0, y = 0, z = 0;  // metres; y is up, the camera looks along +z
};
Vec operator+(Vec a, Vec b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vec operator*(Vec a, Vec b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
Vec operator*(Vec a, float s) {
    return {a.x * s, a.y * s, a.z * s};
}
float dot(Vec a, Vec b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
Vec normalised(Vec a) {
    return a * (1.0F / std::sqrt(dot(a, a)));
}
Vec cross(Vec a, Vec b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Vec mix(Vec a, Vec b, float t) {
    return a * (1.0F - t) + b * t;
}
float smoothstep(float low, float high, float value) {
    const float t = std::clamp((value - low) / (high - low), 0.0F, 1.0F);
    return t * t * (3.0F - 2.0F * t);
}

/// A number in [0, 1) for each lattice point.
float lattice(int x, int y) {
    auto h =
        static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U;
    h = (h ^ (h >> 15)) * 0x2C1B3C6DU;
    h = (h ^ (h >> 12)) * 0x297A2D39U;
    return static_cast<float>((h ^ (h >> 15)) >> 8) / 16777216.0F;
}

struct Noise {
    float value, slopeX, slopeY;
};

/// Value noise in [0, 1) with its exact slope; the quintic blend keeps both continuous.
Noise noise(float x, float y) {
    const float floorX = std::floor(x);
    const float floorY = std::floor(y);
    const float u = x - floorX;
    const float v = y - floorY;
    const int column = static_cast<int>(floorX);
    const int row = static_cast<int>(floorY);
    const float a = lattice(column, row);
    const float b = lattice(column + 1, row) - a;
    const float c = lattice(column, row + 1) - a;
    const float d = lattice(column + 1, row + 1) - a - b - c;
    const float blendU = u * u * u * (u * (u * 6 - 15) + 10);
    const float blendV = v * v * v * (v * (v * 6 - 15) + 10);
    const float riseU = 30 * u * u * (u * (u - 2) + 1);
    const float riseV = 30 * v * v * (v * (v - 2) + 1);
    return {a + b * blendU + c * blendV + d * blendU * blendV, riseU * (b + d * blendV),
            riseV * (c + d * blendU)};
}

/// Sum of octaves in about [0, 1), without erosion: for clouds and stains.
float clouds(float x, float y, int octaves) {
    float sum = 0;
    float weight = 0.5F;
    for (int i = 0; i < octaves; ++i) {
        sum += weight * noise(x, y).value;
        weight *= 0.5F;
        const float turned = 1.6F * x + 1.2F * y;
        y = -1.2F * x + 1.6F * y;
        x = turned;
    }
    return sum;
}

constexpr float kCell = 2300;    // metres between the lattice points of the first octave
constexpr float kRelief = 1420;  // metres
constexpr Vec kSun{-0.80F, 0.30F, 0.16F};
constexpr Vec kSunlight{8.2F, 4.7F, 2.05F};
constexpr float kFar = 52000;

/// Metres above the valley. An octave counts less where the ones before it are
/// steep: slopes stay smooth and ridges sharp, as water would leave them.
float ground(float x, float z, int octaves) {
    x = x / kCell + 200.2F;
    z = z / kCell + 90.9F;
    float height = 0;
    float weight = 1;
    float slopeX = 0;
    float slopeZ = 0;
    for (int i = 0; i < octaves; ++i) {
        const Noise n = noise(x, z);
        slopeX += n.slopeX;
        slopeZ += n.slopeY;
        height += weight * n.value / (1 + slopeX * slopeX + slopeZ * slopeZ);
        weight *= 0.5F;
        const float turned = 1.6F * x - 1.2F * z;
        z = 1.2F * x + 1.6F * z;
        x = turned;
    }
    return kRelief * height;
}

int octavesAt(float distance) {
    return std::clamp(14 - static_cast<int>(std::log2(1 + distance / 260)), 7, 13);
}

/// Distance along the ray to the ground, or below 0 if it meets the sky.
float trace(Vec from, Vec direction) {
    float distance = 20;
    float before = 0;
    for (int step = 0; step < 420 && distance < kFar; ++step) {
        const Vec at = from + direction * distance;
        const float gap = at.y - ground(at.x, at.z, octavesAt(distance) - 2);
        if (gap < 0.0006F * distance) {
            return before + 0.6F * (distance - before);
        }
        if (at.y > 1.35F * kRelief && direction.y > 0) {
            return -1;
        }
        before = distance;
        distance += std::max(0.34F * gap, 0.0015F * distance);
    }
    return -1;
}

/// 1 where the sun is seen from `from`, 0 in the umbra, between in the penumbra.
float sunlit(Vec from, float seenFrom) {
    const Vec sun = normalised(kSun);
    float light = 1;
    float distance = 12 + 0.004F * seenFrom;
    for (int step = 0; step < 70 && distance < 9000; ++step) {
        const Vec at = from + sun * distance;
        const float gap = at.y - ground(at.x, at.z, 8);
        light = std::min(light, 22 * gap / distance);
        if (light < 0.002F || at.y > 1.3F * kRelief) {
            break;
        }
        distance += std::clamp(gap, 18.0F, 300.0F);
    }
    return std::clamp(light, 0.0F, 1.0F);
}

Vec skyColour(Vec direction) {
    const float up = std::max(direction.y, 0.0F);
    Vec colour = mix({0.80F, 0.62F, 0.52F}, {0.115F, 0.235F, 0.50F}, 1 - std::exp(-4.6F * up));
    const float towardsSun = std::max(dot(direction, normalised(kSun)), 0.0F);
    colour = colour + Vec{0.95F, 0.46F, 0.18F} * (0.55F * std::pow(towardsSun, 5.0F)) +
             Vec{1.0F, 0.75F, 0.45F} * (0.9F * std::pow(towardsSun, 60.0F));
    if (direction.y > 0.01F) {
        const float reach = 1 / (direction.y + 0.06F);
        const float x = direction.x * reach;
        const float y = direction.z * reach;
        const float thick =
            clouds(0.9F * x + 3.1F, 2.4F * y + 1.7F, 7) + 0.35F * clouds(3 * x, 3 * y, 5);
        const float veil = smoothstep(0.60F, 0.98F, thick) * smoothstep(0.01F, 0.16F, direction.y);
        const Vec lit =
            mix({0.95F, 0.70F, 0.58F}, {1.5F, 1.02F, 0.66F}, std::pow(towardsSun, 3.0F));
        colour = mix(colour, lit, 0.78F * veil);
    }
    return colour;
}

Vec normalAt(Vec at, float distance) {
    const float step = 0.0009F * distance + 0.6F;
    const int octaves = octavesAt(distance);
    return normalised({ground(at.x - step, at.z, octaves) - ground(at.x + step, at.z, octaves),
                       2 * step,
                       ground(at.x, at.z - step, octaves) - ground(at.x, at.z + step, octaves)});
}

/// What grows or lies there: rock, then meadow and forest low down, then snow high up.
Vec surfaceColour(Vec at, Vec normal) {
    const float stain = clouds(at.x / 90, at.z / 90, 5);
    const float strata = noise(at.y / 26 + 3 * stain, 0.5F).value;
    Vec colour =
        mix({0.155F, 0.125F, 0.105F}, {0.245F, 0.205F, 0.175F}, strata) * (0.6F + 0.8F * stain);
    const float low = 1 - smoothstep(520, 860, at.y + 260 * (stain - 0.5F));
    const Vec meadow = mix({0.085F, 0.095F, 0.028F}, {0.17F, 0.145F, 0.045F}, stain);
    colour = mix(colour, meadow, low * smoothstep(0.62F, 0.82F, normal.y));
    const float grove = clouds(at.x / 210 + 9, at.z / 210, 6);
    const float crowns = noise(at.x / 9, at.z / 9).value;
    const float forest = smoothstep(0.46F, 0.54F, grove) * smoothstep(0.52F, 0.66F, normal.y) *
                         (1 - smoothstep(430, 640, at.y));
    colour = mix(colour, Vec{0.022F, 0.036F, 0.017F} * (0.5F + crowns), 0.92F * forest);
    const float drift = clouds(at.x / 160, at.z / 160 + 5, 6);
    const float snow = smoothstep(690, 930, at.y + 420 * (drift - 0.5F)) *
                       smoothstep(0.50F, 0.72F, normal.y + 0.16F * (drift - 0.5F));
    return mix(colour, {0.78F, 0.80F, 0.86F}, snow);
}

/// Haze gathers in the valleys and takes the sun's colour towards it.
Vec throughAir(Vec colour, Vec from, Vec direction, float distance) {
    constexpr float kThinning = 640;  // metres in which the haze thins to 1/e
    const float rise = direction.y * distance / kThinning;
    const float average = std::abs(rise) < 1e-3F ? 1 : (1 - std::exp(-rise)) / rise;
    const float depth = distance / 12500 * std::exp(-(from.y - 520) / kThinning) * average;
    const float haze = 1 - std::exp(-depth);
    const float blue = 1 - std::exp(-distance / 24000);
    const float towardsSun = std::max(dot(direction, normalised(kSun)), 0.0F);
    const Vec air = mix({0.46F, 0.50F, 0.62F}, {1.20F, 0.74F, 0.44F}, std::pow(towardsSun, 4.0F));
    return mix(mix(colour, {0.36F, 0.43F, 0.60F}, 0.75F * blue), air, haze);
}

Vec radiance(Vec from, Vec direction) {
    const float distance = trace(from, direction);
    if (distance < 0) {
        return throughAir(skyColour(direction), from, direction, direction.y < 0.02F ? kFar : 6000);
    }
    Vec at = from + direction * distance;
    const Vec normal = normalAt(at, distance);
    at.y = ground(at.x, at.z, octavesAt(distance));
    const Vec albedo = surfaceColour(at, normal);
    const Vec sun = normalised(kSun);
    const float facing = std::max(dot(normal, sun), 0.0F);
    const float direct = facing > 0 ? facing * sunlit(at, distance) : 0;
    const float bounce = std::max(-dot(normal, normalised({sun.x, 0, sun.z})), 0.0F);
    const Vec light = kSunlight * direct + Vec{0.36F, 0.49F, 0.80F} * (0.35F + 0.65F * normal.y) +
                      Vec{0.30F, 0.20F, 0.12F} * bounce;
    return throughAir(albedo * light, from, direction, distance);
}

/// The film: a filmic curve after Hable's rational form, then the sRGB transfer function.
float developed(float value) {
    const auto curve = [](float v) {
        return (v * (0.22F * v + 0.03F) + 0.002F) / (v * (0.22F * v + 0.3F) + 0.06F) - 0.0333F;
    };
    const float linear = std::clamp(curve(value * 1.85F) / curve(8.0F), 0.0F, 1.0F);
    return linear < 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1 / 2.4F) - 0.055F;
}

std::uint8_t byteOf(float value, float grain) {
    return static_cast<std::uint8_t>(std::clamp(255 * value + grain, 0.0F, 255.0F) + 0.5F);
}

struct Camera {
    Vec position{0, 0, 0}, ahead, right, up;
    Camera() {
        position.y = ground(position.x, position.z, 8) + 190;
        ahead = normalised({0.10F, -0.035F, 1});
        right = normalised(cross({0, 1, 0}, ahead));
        up = cross(ahead, right);
    }
};

void renderRow(std::vector<std::uint8_t>& pixels, int width, int height, int row,
               const Camera& camera) {
    constexpr int kSide = 3;  // samples a pixel along each axis
    for (int column = 0; column < width; ++column) {
        Vec sum;
        for (int sample = 0; sample < kSide * kSide; ++sample) {
            const float x =
                static_cast<float>(column) + (static_cast<float>(sample % kSide) + 0.5F) / kSide;
            const float y =
                static_cast<float>(row) + (static_cast<float>(sample / kSide) + 0.5F) / kSide;
            const float u = (2 * x - static_cast<float>(width)) / static_cast<float>(height);
            const float v = 1 - 2 * y / static_cast<float>(height);
            const Vec direction =
                normalised(camera.ahead * 1.75F + camera.right * u + camera.up * v);
            const Vec seen = radiance(camera.position, direction);
            sum = sum + Vec{std::min(seen.x, 6.0F), std::min(seen.y, 6.0F), std::min(seen.z, 6.0F)};
        }
        sum = sum * (1.0F / (kSide * kSide));
        const float u = static_cast<float>(2 * column - width) / static_cast<float>(width);
        const float v = static_cast<float>(2 * row - height) / static_cast<float>(height);
        sum = sum * (1 - 0.16F * (u * u + v * v));
        const float grey = 0.2126F * sum.x + 0.7152F * sum.y + 0.0722F * sum.z;
        sum = mix({grey, grey, grey}, sum, 1.22F);  // as saturated as a camera would make it
        sum = {std::max(sum.x, 0.0F), std::max(sum.y, 0.0F), std::max(sum.z, 0.0F)};
        const float grain = 5 * (lattice(column, row + 100000) - 0.5F);
        std::uint8_t* pixel =
            &pixels[3 * (static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                         static_cast<std::size_t>(column))];
        pixel[0] = byteOf(developed(sum.x), grain);
        pixel[1] = byteOf(developed(sum.y), grain);
        pixel[2] = byteOf(developed(sum.z), grain);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const int width = argc == 3 ? std::atoi(argv[1]) : 1600;
    const int height = argc == 3 ? std::atoi(argv[2]) : 1200;
    if (width < 1 || height < 1) {
        std::fputs("usage: sample_photo [WIDTH HEIGHT]\n", stderr);
        return 2;
    }
    std::vector<std::uint8_t> pixels(3 * static_cast<std::size_t>(width) *
                                     static_cast<std::size_t>(height));
    const Camera camera;
    constexpr int kThreads = 2;
    std::vector<std::thread> threads;
    for (int first = 0; first < kThreads; ++first) {
        threads.emplace_back([&, first] {
            for (int row = first; row < height; row += kThreads) {
                renderRow(pixels, width, height, row, camera);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::printf("P6\n%d %d\n255\n", width, height);
    return std::fwrite(pixels.data(), 1, pixels.size(), stdout) == pixels.size() ? 0 : 1;
}
