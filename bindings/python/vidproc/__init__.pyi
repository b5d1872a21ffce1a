from enum import IntEnum
from typing import Any, Literal, Sequence, TypedDict, TypeVar, Union

import numpy as np
import numpy.typing as npt
from typing_extensions import Self, Unpack

Format = Literal["UYVY", "YUYV", "NV12", "I420", "I422"]
Siting = Literal["left", "centre"]
Plane = Union[npt.NDArray[np.uint8], bytes, bytearray, memoryview]
Frame = Union[Plane, Sequence[Plane]]
Output = TypeVar("Output", bound=Frame)

__version__: str

class Status(IntEnum):
    INVALID_ARGUMENT = 1
    UNSUPPORTED = 2
    OUT_OF_MEMORY = 3
    NOT_CONFIGURED = 4
    FRAME_MISMATCH = 5
    BUFFER_TOO_SMALL = 6
    OVERLAP = 7

class Error(ValueError):
    status: Status

class _Settings(TypedDict, total=False):
    output_format: Format
    output_width: int
    output_height: int
    output_siting: Siting
    alignment: Literal["centres", "corners"]
    filter: Literal[
        "automatic",
        "bilinear",
        "catmull-rom",
        "mitchell",
        "lanczos",
        "area",
        "gaussian",
        "hamming-sinc",
        "two-sincs",
    ]
    taps: Literal[8, 16]
    softening: int
    lobes: int
    sharpening: int
    luma_gain: int
    luma_offset: int
    dither_level: int
    dither_seed: int

class PreSettings(_Settings, total=False):
    preset: Literal["webcam", "low-light", "low-bandwidth", "screen", "none"] | None
    denoise_edge: int
    denoise_softening: int
    denoise_taps: Literal[8, 16]
    temporal_strength: int
    temporal_shift: int
    motion_smoothing: int
    denoise_passes: int
    denoise_auto: int

class PostSettings(_Settings, total=False):
    preset: Literal["camera", "screen-share", "none"] | None
    deblock_level: int

class _Stream:
    def reset(self) -> None: ...
    def close(self) -> None: ...
    def __enter__(self) -> Self: ...
    def __exit__(self, *args: object) -> None: ...

class _Processor(_Stream):
    def process(self, frame: Frame, output: Output | None = None) -> Output | npt.NDArray[np.uint8]: ...
    @property
    def settings(self) -> dict[str, Any]: ...
    @property
    def passes_through(self) -> bool: ...

class Pre(_Processor):
    def __init__(
        self, format: Format, width: int, height: int, *, siting: Siting = "left", **settings: Unpack[PreSettings]
    ) -> None: ...
    def configure(self, **settings: Unpack[PreSettings]) -> None: ...
    @property
    def noise(self) -> float: ...

class Post(_Processor):
    def __init__(
        self, format: Format, width: int, height: int, *, siting: Siting = "left", **settings: Unpack[PostSettings]
    ) -> None: ...
    def configure(self, **settings: Unpack[PostSettings]) -> None: ...

class Exposure(_Stream):
    def __init__(self, format: Format, width: int, height: int) -> None: ...
    def process(self, frame: Frame) -> Literal["drifted", "settled"] | None: ...

def frame_bytes(format: Format, width: int, height: int) -> int: ...
def planes(
    memory: npt.NDArray[np.uint8], format: Format, width: int, height: int
) -> tuple[npt.NDArray[np.uint8], ...]: ...
def level() -> str: ...
