#!/usr/bin/env python3
"""Turns a Whisper model in CTranslate2 form, as Python packages carry it, into a ggml file that whisper-server loads.

Usage: convert_whisper_model.py OUTPUT WHEEL...

The wheels together hold one `vocabulary.txt` and one `model.bin`, which may be cut into `model.bin.part1`, `.part2`
and so on. Both forms are little-endian.

CTranslate2 form, version 6. A string is a u16 length and that many bytes, the last of them NUL:

    u32 version, string architecture, u32 revision
    u32 number of variables, for each: string name, u8 rank, u32 dimensions..., u8 type, u32 bytes, data
        type: 0 float32, 1 int8, 2 int16, 3 int32, 4 float16
    u32 number of aliases, for each: string alias, string name       (only the projection, tied to the embedding)

    The attention projections are stacked by rows: self_attention/linear_0 is query, key and value, linear_1 the output;
    in the decoder's attention over the audio linear_0 is query, linear_1 key and value, linear_2 the output.
    ffn/linear_0 and linear_1 are the two layers of the perceptron; gamma and beta are a layer norm's weight and bias.

ggml form:

    u32 magic 0x67676d6c
    i32 x 11: vocabulary size, audio positions, audio state, audio heads, audio layers,
              text positions, text state, text heads, text layers, mel bands, 1 (weights are float16)
    i32 rows, i32 columns, float32...                               the mel filter bank
    i32 number of tokens, for each: u32 length, bytes               text tokens only; the reader adds the special ones
    until the end, for each tensor: i32 rank, i32 name length, i32 type (0 float32, 1 float16),
              i32 dimensions... in reverse order, name, data

    Weights of two and more dimensions are float16; biases, layer norms and positions float32. A convolution's bias has
    the shape (n, 1), and the key projection has no bias.
"""

import os
import struct
import sys
import zipfile

import numpy as np

SAMPLE_RATE = 16000
FFT_SIZE = 400
HEAD_SIZE = 64  # of every Whisper model
VARIABLE_TYPES = {0: np.float32, 1: np.int8, 2: np.int16, 3: np.int32, 4: np.float16}


class Reader:
    """Takes values off the front of a buffer; fails on one that is too short."""

    def __init__(self, buffer):
        self.buffer = memoryview(buffer)
        self.offset = 0

    def take(self, size):
        taken = self.buffer[self.offset : self.offset + size]
        if len(taken) != size:
            raise ValueError("the model ends early")
        self.offset += size
        return taken

    def unpack(self, layout):
        return struct.unpack("<" + layout, self.take(struct.calcsize("<" + layout)))

    def string(self):
        (length,) = self.unpack("H")
        return bytes(self.take(length)).rstrip(b"\0").decode()


def read_wheels(paths):
    """The vocabulary's lines and the whole model.bin of the wheels."""
    vocabulary = None
    parts = {}
    for path in paths:
        with zipfile.ZipFile(path) as wheel:
            for name in wheel.namelist():
                file = os.path.basename(name)
                if file == "vocabulary.txt":
                    vocabulary = wheel.read(name).decode().split("\n")
                elif file.startswith("model.bin"):
                    parts[file] = wheel.read(name)
    if vocabulary is None or not parts:
        raise ValueError("the packages hold no model in the expected form")
    ordered = sorted(parts, key=lambda file: int(file.rpartition("part")[2] or 0) if "part" in file else 0)
    return vocabulary, b"".join(parts[file] for file in ordered)


def read_variables(model):
    reader = Reader(model)
    (version,) = reader.unpack("I")
    architecture = reader.string()
    if (version, architecture) != (6, "WhisperSpec"):
        raise ValueError(f"unknown form: version {version}, {architecture}")
    _revision, count = reader.unpack("II")
    variables = {}
    for _ in range(count):
        name = reader.string()
        (rank,) = reader.unpack("B")
        shape = reader.unpack(f"{rank}I")
        kind, size = reader.unpack("BI")
        variables[name] = np.frombuffer(reader.take(size), VARIABLE_TYPES[kind]).reshape(shape)
    return variables


def mel_filters(bands):
    """Slaney's mel filter bank (Auditory Toolbox, 1998): linear to 1 kHz, logarithmic above, each of unit area."""
    linear_step, break_hz = 200 / 3, 1000.0
    break_mel, log_step = break_hz / linear_step, np.log(6.4) / 27

    def to_mel(hz):
        return break_mel + np.log(hz / break_hz) / log_step if hz >= break_hz else hz / linear_step

    def to_hz(mel):
        return np.where(mel >= break_mel, break_hz * np.exp(log_step * (mel - break_mel)), linear_step * mel)

    bins = np.linspace(0, SAMPLE_RATE / 2, FFT_SIZE // 2 + 1)
    edges = to_hz(np.linspace(to_mel(0.0), to_mel(SAMPLE_RATE / 2), bands + 2))
    widths = np.diff(edges)
    ramps = edges[:, None] - bins[None, :]
    rising = -ramps[:-2] / widths[:-1, None]
    falling = ramps[2:] / widths[1:, None]
    area = 2 / (edges[2:] - edges[:-2])
    return (np.maximum(0, np.minimum(rising, falling)) * area[:, None]).astype(np.float32)


def token_bytes(vocabulary):
    """The raw bytes of every text token. The vocabulary writes a byte as one printable character (GPT-2's table):
    printable Latin-1 stands for itself, the other bytes follow from U+0100 in ascending order."""
    printable = [*range(0x21, 0x7F), *range(0xA1, 0xAD), *range(0xAE, 0x100)]
    others = [byte for byte in range(256) if byte not in printable]
    table = {chr(byte): byte for byte in printable} | {chr(0x100 + i): byte for i, byte in enumerate(others)}
    text_tokens = vocabulary[: vocabulary.index("<|endoftext|>")]
    return [bytes(table[character] for character in token) for token in text_tokens]


def layer_norm(variables, source, target):
    yield f"{target}.weight", variables[f"{source}/gamma"]
    yield f"{target}.bias", variables[f"{source}/beta"]


def linear(variables, source, *targets):
    """The layers stacked in one variable, each under its name."""
    weights = np.split(variables[f"{source}/weight"], len(targets))
    biases = np.split(variables[f"{source}/bias"], len(targets))
    for target, weight, bias in zip(targets, weights, biases):
        yield f"{target}.weight", weight
        if not target.endswith(".key"):
            yield f"{target}.bias", bias


def block(variables, source, target):
    """One transformer layer; only the decoder's have attention over the audio."""
    self_attention = f"{source}/self_attention"
    yield from layer_norm(variables, f"{self_attention}/layer_norm", f"{target}.attn_ln")
    yield from linear(variables, f"{self_attention}/linear_0", *(f"{target}.attn.{part}" for part in ("query", "key", "value")))
    yield from linear(variables, f"{self_attention}/linear_1", f"{target}.attn.out")
    if f"{source}/attention/linear_0/weight" in variables:
        attention = f"{source}/attention"
        yield from layer_norm(variables, f"{attention}/layer_norm", f"{target}.cross_attn_ln")
        yield from linear(variables, f"{attention}/linear_0", f"{target}.cross_attn.query")
        yield from linear(variables, f"{attention}/linear_1", *(f"{target}.cross_attn.{part}" for part in ("key", "value")))
        yield from linear(variables, f"{attention}/linear_2", f"{target}.cross_attn.out")
    yield from layer_norm(variables, f"{source}/ffn/layer_norm", f"{target}.mlp_ln")
    yield from linear(variables, f"{source}/ffn/linear_0", f"{target}.mlp.0")
    yield from linear(variables, f"{source}/ffn/linear_1", f"{target}.mlp.2")


def layer_count(variables, part):
    return sum(1 for name in variables if name.startswith(part) and name.endswith("/self_attention/linear_0/weight"))


def tensors(variables):
    for convolution in ("conv1", "conv2"):
        yield f"encoder.{convolution}.weight", variables[f"encoder/{convolution}/weight"]
        yield f"encoder.{convolution}.bias", variables[f"encoder/{convolution}/bias"].reshape(-1, 1)
    yield "decoder.token_embedding.weight", variables["decoder/embeddings/weight"]
    for part, final_norm in (("encoder", "ln_post"), ("decoder", "ln")):
        yield f"{part}.positional_embedding", variables[f"{part}/position_encodings/encodings"]
        yield from layer_norm(variables, f"{part}/layer_norm", f"{part}.{final_norm}")
        for layer in range(layer_count(variables, part)):
            yield from block(variables, f"{part}/layer_{layer}", f"{part}.blocks.{layer}")


def write_tensor(output, name, values):
    is_weight = values.ndim >= 2 and name.endswith(".weight")
    encoded = name.encode()
    output.write(struct.pack("<iii", values.ndim, len(encoded), int(is_weight)))
    output.write(struct.pack(f"<{values.ndim}i", *reversed(values.shape)))
    output.write(encoded)
    output.write(values.astype(np.float16 if is_weight else np.float32).tobytes())


def write_model(output, variables, vocabulary):
    audio_positions, audio_state = variables["encoder/position_encodings/encodings"].shape
    text_positions, text_state = variables["decoder/position_encodings/encodings"].shape
    vocabulary_size = variables["decoder/embeddings/weight"].shape[0]
    mel_bands = variables["encoder/conv1/weight"].shape[1]
    output.write(struct.pack("<I", 0x67676D6C))
    output.write(struct.pack("<4i", vocabulary_size, audio_positions, audio_state, audio_state // HEAD_SIZE))
    output.write(struct.pack("<4i", layer_count(variables, "encoder"), text_positions, text_state, text_state // HEAD_SIZE))
    output.write(struct.pack("<3i", layer_count(variables, "decoder"), mel_bands, 1))

    filters = mel_filters(mel_bands)
    output.write(struct.pack("<2i", *filters.shape))
    output.write(filters.tobytes())

    tokens = token_bytes(vocabulary)
    output.write(struct.pack("<i", len(tokens)))
    for token in tokens:
        output.write(struct.pack("<I", len(token)) + token)

    for name, values in tensors(variables):
        write_tensor(output, name, values)


def main(arguments):
    if len(arguments) < 2:
        sys.exit("usage: convert_whisper_model.py OUTPUT WHEEL...")
    output_path, *wheels = arguments
    vocabulary, model = read_wheels(wheels)
    with open(output_path, "wb") as output:
        write_model(output, read_variables(model), vocabulary)


if __name__ == "__main__":
    main(sys.argv[1:])
