"""Plays the music: "First Light", D major, 75 beats a minute, 28 bars; writes ../first-light.ogg.

Needs numpy and oggenc:  python3 make_music.py
The bars are those of the show (one bar is 320 ticks), so cuts fall on the beat.
"""
import os
import subprocess
import sys
import wave

import numpy as np

RATE = 44100
BEAT = 0.8
BAR = 4 * BEAT
LENGTH = 92.0
DICE = np.random.default_rng(1907)

# One chord a bar: bass note, then the notes above it, as numbers of half steps (60 is middle C).
B_MINOR, B_SEVEN = (35, 59, 62, 66, 73), (35, 57, 62, 66, 69)
G_MAJOR, G_NINE = (31, 55, 59, 62, 66), (31, 57, 59, 62, 66)
D_MAJOR, D_LOW_F, D_WIDE = (38, 57, 62, 66, 69), (42, 57, 62, 66, 69), (38, 57, 62, 66, 74)
A_MAJOR, A_LOW_C, A_OPEN = (33, 57, 61, 64, 69), (37, 57, 61, 64, 69), (33, 57, 59, 64, 69)
F_MINOR = (42, 57, 61, 64, 69)
CHORDS = [B_MINOR, G_MAJOR, D_LOW_F, A_OPEN,                            # night
          D_MAJOR, A_LOW_C, B_SEVEN, G_NINE, A_MAJOR,                   # lake
          B_SEVEN, G_MAJOR, D_MAJOR, A_LOW_C,                           # stones
          B_MINOR, G_NINE, D_LOW_F, A_MAJOR,                            # temple
          G_NINE, A_MAJOR, F_MINOR, B_SEVEN,                            # windows
          G_MAJOR, A_MAJOR, B_MINOR,                                    # bloom
          D_WIDE, G_NINE, A_OPEN, D_WIDE]                               # morning
assert len(CHORDS) == 28


def hertz(note):
    return 440.0 * 2 ** ((note - 69) / 12)


class Track:
    def __init__(self):
        self.left = np.zeros(int(LENGTH * RATE))
        self.right = np.zeros(int(LENGTH * RATE))

    def put(self, at, sound, level=1.0, pan=0.0):
        start = int(round(at * RATE))
        if start >= len(self.left):
            return
        sound = sound[:len(self.left) - start]
        angle = (pan + 1) * np.pi / 4
        self.left[start:start + len(sound)] += sound * level * np.cos(angle) * 1.414
        self.right[start:start + len(sound)] += sound * level * np.sin(angle) * 1.414

    def stereo(self):
        return np.stack([self.left, self.right])


def times(length):
    return np.arange(int(length * RATE)) / RATE


def envelope(length, attack, release):
    t = times(length)
    return np.clip(t / attack, 0, 1) ** 1.5 * np.clip((length - t) / release, 0, 1) ** 1.5


def pad(note, length, bright):
    """Three slightly mistuned voices of a few partials."""
    t = times(length)
    sound = np.zeros_like(t)
    for cents in (-7, 0, 6):
        f = hertz(note) * 2 ** (cents / 1200)
        drift = 0.6 * np.sin(2 * np.pi * (0.11 + 0.02 * cents / 7) * t + cents)
        for n in range(1, 9):
            level = np.exp(-(n - 1) / bright) / n ** 0.8
            sound += np.sin(2 * np.pi * f * n * t + n * drift + DICE.uniform(0, 6.28)) * level
    return sound * envelope(length, 0.9, 1.3) / 3


def pluck(note, length=1.6, bright=1.0):
    t = times(length)
    f = hertz(note)
    body = sum(np.sin(2 * np.pi * f * n * t) * np.exp(-t * (2.6 + 1.9 * n / bright)) / n ** 1.2 for n in range(1, 7))
    return body * np.clip(t / 0.004, 0, 1) * np.clip((length - t) / 0.1, 0, 1)


def bell(note, length=4.0):
    t = times(length)
    f = hertz(note)
    sound = np.sin(2 * np.pi * f * t + 1.6 * np.exp(-t * 2.5) * np.sin(2 * np.pi * f * 3.5 * t)) * np.exp(-t * 1.25)
    sound += 0.25 * np.sin(2 * np.pi * f * 2.003 * t) * np.exp(-t * 2.2)
    return sound * np.clip(t / 0.006, 0, 1) * np.clip((length - t) / 0.3, 0, 1)


def lead(note, length):
    """A soft reed that leans into its note."""
    t = times(length)
    wobble = 0.20 * np.sin(2 * np.pi * 5.1 * t) * np.clip((t - 0.25) / 0.5, 0, 1)
    phase = 2 * np.pi * np.cumsum(hertz(note) * 2 ** ((wobble - 0.35 * np.exp(-t * 22)) / 12)) / RATE
    sound = sum(np.sin(n * phase) * w for n, w in ((1, 1.0), (2, 0.34), (3, 0.20), (4, 0.07), (5, 0.04)))
    return sound * envelope(length, 0.06, min(0.35, length * 0.5))


def bass(note, length):
    t = times(length)
    f = hertz(note)
    sound = np.sin(2 * np.pi * f * t) + 0.35 * np.sin(4 * np.pi * f * t) + 0.12 * np.sin(6 * np.pi * f * t)
    return np.tanh(sound * 1.2) * np.clip(t / 0.015, 0, 1) * np.exp(-t * 0.5) * np.clip((length - t) / 0.12, 0, 1)


def kick():
    t = times(0.45)
    phase = 2 * np.pi * np.cumsum(46 + 90 * np.exp(-t * 32)) / RATE
    return np.sin(phase) * np.exp(-t * 8) * np.clip((0.45 - t) / 0.1, 0, 1)


def softened(noise, amount):
    """Noise with its highs (amount > 0) or lows (amount < 0) taken away."""
    spectrum = np.fft.rfft(noise)
    f = np.fft.rfftfreq(len(noise), 1 / RATE)
    shape = 1 / (1 + (f / amount) ** 2) if amount > 0 else (f / -amount) ** 2 / (1 + (f / -amount) ** 2)
    return np.fft.irfft(spectrum * shape, len(noise))


def shaker(length=0.11):
    t = times(length)
    return softened(DICE.standard_normal(len(t)), -6500) * np.clip(t / 0.012, 0, 1) * np.exp(-t * 38)


def brush(length=0.35):
    t = times(length)
    noise = softened(softened(DICE.standard_normal(len(t)), 5200), -700)
    return noise * np.clip(t / 0.004, 0, 1) * np.exp(-t * 15) + 0.25 * np.sin(2 * np.pi * 196 * t) * np.exp(-t * 24)


def swell(length):
    """A breath of air that rises into the next part."""
    t = times(length)
    noise = DICE.standard_normal(len(t))
    low, high = softened(noise, 900), softened(noise, 6000)
    x = t / length
    return (low * (1 - x) + high * x) * x ** 2.6 * np.clip((length - t) / 0.06, 0, 1)


def shimmer(length=3.5):
    t = times(length)
    noise = softened(DICE.standard_normal(len(t)), -5200)
    return noise * np.exp(-t * 1.5) * np.clip(t / 0.01, 0, 1) * np.clip((length - t), 0, 1)


def reverberated(dry, seconds=3.4, damping=2600):
    n = int(seconds * RATE)
    t = np.arange(n) / RATE
    wet = []
    size = 1 << (dry.shape[1] + n - 1).bit_length()
    for channel in range(2):
        tail = DICE.standard_normal(n) * np.exp(-t * 6.9 / seconds) * np.clip(t / 0.03, 0, 1)
        tail = softened(tail, damping)
        tail /= np.sqrt((tail ** 2).sum())
        wet.append(np.fft.irfft(np.fft.rfft(dry[channel], size) * np.fft.rfft(tail, size), size)[:dry.shape[1]])
    return np.stack(wet)


def delayed(dry, seconds, feedback, turns=5):
    out = np.zeros_like(dry)
    step = int(seconds * RATE)
    for k in range(1, turns + 1):
        source = dry if k % 2 == 0 else dry[::-1]          # from side to side
        out[:, step * k:] += source[:, :-step * k] * feedback ** k
    return out


# (bar, beat, length in beats, note)
BELLS = [(0, 0, 4, 78), (0, 2.5, 3, 85), (1, 1, 4, 81), (1, 3, 3, 78), (2, 0.5, 4, 76), (2, 2, 3, 74), (3, 0, 4, 76),
         (3, 2, 3, 81), (24, 0, 4, 86), (24, 2, 4, 81), (25, 1, 4, 83), (26, 0, 4, 81), (26, 2, 4, 76), (27, 0, 6, 78),
         (27, 1, 6, 86), (27, 2, 6, 90)]
MELODY = [(9, 2, 1, 66), (9, 3, 1, 69), (10, 0, 2.5, 71), (10, 3, 1, 69),
          (11, 0, 1.5, 66), (11, 2, 1, 64), (11, 3, 1, 62), (12, 0, 3.5, 64),
          (13, 0, 1.5, 74), (13, 2, 1, 73), (13, 3, 1, 69), (14, 0, 2.5, 71), (14, 3, 0.5, 69), (14, 3.5, 0.5, 71),
          (15, 0, 1.5, 69), (15, 2, 1, 66), (15, 3, 1, 62), (16, 0, 2, 64), (16, 2, 2, 69),
          (19, 0, 2, 73), (19, 2, 2, 76), (20, 0, 2, 78), (20, 2, 1, 76), (20, 3, 1, 74),
          (21, 0, 2.5, 78), (21, 2.5, 0.5, 79), (21, 3, 1, 81), (22, 0, 2.5, 81), (22, 3, 1, 78),
          (23, 0, 1.5, 76), (23, 2, 2, 73),
          (24, 0, 3.5, 74), (25, 0, 2, 71), (25, 2, 2, 74), (26, 0, 3, 76), (27, 0, 5, 74)]


def play():
    pads, plucks, bells, leads, low, drums, air = (Track() for _ in range(7))

    for bar, chord in enumerate(CHORDS):
        at = bar * BAR
        bright = np.interp(bar, [0, 4, 9, 13, 21, 24, 28], [1.0, 1.6, 1.8, 2.4, 3.6, 3.0, 1.4])
        level = np.interp(bar, [0, 4, 13, 21, 24, 28], [0.85, 0.8, 0.75, 1.0, 1.0, 0.85])
        length = BAR + 1.2 if bar < 27 else BAR + 3.0
        for k, note in enumerate(chord[1:]):
            pads.put(at, pad(note, length, bright), 0.085 * level, (-0.6, 0.5, -0.25, 0.65)[k])
        if bar >= 4:
            if bar < 9 or bar >= 24:
                low.put(at, bass(chord[0], BAR), 0.26)
            else:
                for beat, beats in ((0, 1.4), (1.5, 0.9), (2.5, 1.4)):
                    octave = 12 if beat == 2.5 and bar >= 13 else 0
                    low.put(at + beat * BEAT, bass(chord[0] + octave, beats * BEAT), 0.27)

    # the broken chords: eighths at the lake, sixteenths from the temple on, thinning out in the morning
    for bar in range(4, 28):
        chord = CHORDS[bar][1:]
        steps = 8 if bar < 13 or bar >= 24 else 16
        rise = np.interp(bar, [4, 9, 13, 21, 24, 27], [0.35, 0.62, 0.66, 0.9, 0.75, 0.35])
        order = (0, 2, 1, 3, 2, 4, 3, 1) if steps == 8 else (0, 2, 3, 1, 4, 2, 3, 5, 4, 2, 3, 1, 5, 4, 3, 2)
        for k in range(steps):
            if bar == 27 and k > 3:
                break
            rung = order[k]
            note = chord[rung % 4] + 12 * (rung // 4) + 12
            accent = 1.0 if k % (steps // 4) == 0 else 0.72
            level = 0.15 * rise * accent * DICE.uniform(0.85, 1.0)
            pan = 0.55 * np.sin(k * 1.9 + bar)
            plucks.put(bar * BAR + k * BAR / steps, pluck(note, 1.5, 1.0 + 0.05 * bar), level, pan)

    for bar, beat, beats, note in BELLS:
        bells.put(bar * BAR + beat * BEAT, bell(note, beats * BEAT + 1.6), 0.15, DICE.uniform(-0.5, 0.5))
    for bar, beat, beats, note in MELODY:
        loud = np.interp(bar, [9, 13, 21, 24, 27], [0.10, 0.13, 0.17, 0.14, 0.10])
        leads.put(bar * BAR + beat * BEAT, lead(note, beats * BEAT + 0.15), loud, 0.08)
        if 21 <= bar < 24:
            leads.put(bar * BAR + beat * BEAT, lead(note - 12, beats * BEAT + 0.15), loud * 0.6, -0.25)

    kicks = []
    for bar in range(9, 24):
        beats = (0, 2.5) if bar < 13 else (0, 1, 2, 3) if bar >= 21 else (0, 1.5, 2)
        if bar == 20:
            beats = (0,)
        kicks += [bar * BAR + beat * BEAT for beat in beats]
        if bar >= 13 and bar != 20:
            for k in range(8):
                drums.put(bar * BAR + k * BEAT / 2 + (0.012 if k % 2 else 0), shaker(), 0.10 if k % 2 else 0.055, 0.35)
        if bar >= 17 and bar != 20:
            for beat in (1, 3):
                drums.put(bar * BAR + beat * BEAT, brush(), 0.15, -0.15)
    for at in kicks:
        drums.put(at, kick(), 0.46)

    for bar, length, level in ((4, 3.2, 0.05), (9, 2.4, 0.06), (13, 2.4, 0.07),
                               (17, 1.6, 0.06), (21, 4.8, 0.13), (24, 2.4, 0.06)):
        air.put(bar * BAR - length, swell(length), level)
    for bar, level in ((4, 0.05), (13, 0.07), (17, 0.06), (21, 0.11), (24, 0.09)):
        air.put(bar * BAR, shimmer(), level, 0.2)

    # the pads and the broken chords give way to the drum for a moment
    duck = np.ones(len(pads.left))
    t = times(0.55)
    for at in kicks:
        start = int(at * RATE)
        dip = 1 - 0.34 * np.exp(-t * 7.5)
        duck[start:start + len(t)] *= dip[:len(duck) - start]

    plucked = plucks.stereo() + delayed(plucks.stereo(), 0.75 * BEAT, 0.42)
    rung = bells.stereo() + delayed(bells.stereo(), 1.5 * BEAT, 0.38, 4)
    dry = (pads.stereo() + 0.9 * plucked) * duck + rung + leads.stereo() + low.stereo() + drums.stereo() + air.stereo()
    send = (0.55 * pads.stereo() * duck + 0.75 * plucked + rung + 0.8 * leads.stereo()
            + 0.10 * drums.stereo() + 0.8 * air.stereo())
    mix = dry + 0.42 * reverberated(send)

    t = np.arange(mix.shape[1]) / RATE
    mix *= np.clip(t / 1.5, 0, 1) * np.clip((LENGTH - 0.2 - t) / 4.0, 0, 1) ** 1.3
    mix = np.tanh(mix * 1.15 / np.percentile(np.abs(mix), 99.9))
    return mix * 0.70 / np.abs(mix).max()


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    sound = play()
    plain = os.path.join(sys.argv[1] if len(sys.argv) > 1 else here, "first-light.wav")
    with wave.open(plain, "wb") as file:
        file.setnchannels(2)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes((sound.T * 32767).astype("<i2").tobytes())
    subprocess.run(["oggenc", "-Q", "-b", "84", "-o", os.path.join(here, os.pardir, "first-light.ogg"), plain], check=True)
    os.remove(plain)


if __name__ == "__main__":
    main()
