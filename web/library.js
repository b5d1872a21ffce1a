// The library: settings, streams of frames, and the memory that frames lie in.
import createModule from './vidproc.mjs';

/// VIDPROC_FORMAT_* of the frames that are taken.
const formats = { NV12: 3, I420: 4, I422: 5 };

export async function loadLibrary() {
  try {
    return new Library(await createModule());
  } catch (error) {
    throw new Error(`The library does not start here; it needs WebAssembly with SIMD (${error.message})`);
  }
}

class Library {
  #module;

  constructor(module) {
    this.#module = module;
  }

  /// {options: [{name, text, choices, low, high, also}], presets: [{name, values}]}
  listSettings() {
    return JSON.parse(this.#module.UTF8ToString(this.#module._ListSettings()));
  }

  makeStream() {
    return new Stream(this.#module);
  }

  makeConverter(width, height, noise) {
    return new PictureConverter(this.#module, width, height, noise);
  }
}

/// Memory that the library works on. Views of it hold until more memory is taken.
class Block {
  #module;
  #address = 0;
  #bytes = 0;

  constructor(module) {
    this.#module = module;
  }

  resize(bytes) {
    if (bytes === this.#bytes) return;
    this.free();
    this.#address = this.#module._malloc(bytes);
    this.#bytes = this.#address ? bytes : 0;
    if (!this.#address) throw new Error(`There is no memory for a frame of ${bytes} bytes`);
  }

  free() {
    this.#module._free(this.#address);
    this.#address = this.#bytes = 0;
  }

  get address() {
    return this.#address;
  }

  get view() {
    return this.#module.HEAPU8.subarray(this.#address, this.#address + this.#bytes);
  }
}

/// Frames of I420 from frames of any format that the page gets.
export class Stream {
  #module;
  #handle;
  #values;
  #output;

  constructor(module) {
    this.#module = module;
    this.#handle = module._CreateStream();
    this.#values = new Block(module);
    this.#output = new Block(module);
    if (!this.#handle) throw new Error('There is no memory for a stream');
  }

  static takes(format) {
    return format in formats;
  }

  /// Takes the values of all settings, in the order of listSettings, and a frame's format and size. After an error the
  /// former settings hold.
  configure(values, { format, width, height }, outputWidth, outputHeight) {
    this.#values.resize(4 * values.length);
    this.#values.view.set(new Uint8Array(Int32Array.from(values).buffer));
    const sizes = [width, height, outputWidth, outputHeight];
    this.#check(this.#module._Configure(this.#handle, this.#values.address, formats[format], ...sizes));
    this.#output.resize(this.#module._OutputBytes(this.#handle));
    this.width = outputWidth;
    this.height = outputHeight;
  }

  makeInput() {
    return new Block(this.#module);
  }

  get inputBytes() {
    return this.#module._InputBytes(this.#handle);
  }

  process(input) {
    this.#check(this.#module._Process(this.#handle, input.address, this.#output.address));
  }

  /// What was made of the last frame.
  get output() {
    return this.#output.view;
  }

  /// In luma levels.
  get noise() {
    return this.#module._Noise(this.#handle) / 100;
  }

  reset() {
    this.#module._Reset(this.#handle);
  }

  #check(status) {
    if (status) throw new Error(this.#module.UTF8ToString(this.#module._LastError(this.#handle)));
  }
}

/// Turns pictures of one size into frames of I420, with a sensor's noise.
class PictureConverter {
  #module;
  #handle;
  #picture;
  #frame;

  constructor(module, width, height, noise) {
    this.#module = module;
    this.#handle = module._CreateConverter(width, height, noise);
    this.#picture = new Block(module);
    this.#frame = new Block(module);
    this.#picture.resize(4 * width * height);
    this.#frame.resize(width * height + 2 * Math.ceil(width / 2) * Math.ceil(height / 2));
    this.width = width;
    this.height = height;
  }

  /// Where the picture goes: red, green, blue, alpha a pixel.
  get picture() {
    return this.#picture.view;
  }

  /// The picture as I420, with the noise of frame `number`.
  convert(number) {
    this.#module._ConvertPicture(this.#handle, number, this.#picture.address, this.#frame.address);
    return this.#frame.view;
  }

  destroy() {
    this.#module._DestroyConverter(this.#handle);
    this.#picture.free();
    this.#frame.free();
  }
}
