// One stream before and after: processes its frames, draws both, measures, and has both encoded.
import { BitEstimate, findCodec } from './bits.js';
import { Stream } from './library.js';
import { writeY4m } from './y4m.js';

const second = 1000;

export class Comparison {
  #library;
  #contexts;
  #report;
  #stream;
  #scaled;
  #plainValues;
  #input;
  #converter = null;
  #settings = null; // those in use
  #wanted = null;
  #format = '';
  #shape = '';
  #unscaled = false; // frames have the output's format and size
  #estimate = null;
  #lastTimestamp = -Infinity;
  #number = -1;
  #figures = noFigures();

  /// `report(type, content)` gets 'figures' every second and 'error' for what is refused.
  constructor(library, canvases, report) {
    this.#library = library;
    this.#contexts = canvases.map((canvas) => canvas.getContext('2d', { alpha: false }));
    this.#report = report;
    this.#stream = library.makeStream();
    this.#scaled = library.makeStream();
    this.#input = this.#stream.makeInput();
    this.#plainValues = library.listSettings().presets.find(({ name }) => name === 'none').values;
  }

  /// {values, scale, quantiser}: values of all settings, the output's share of the input's width and height, and the
  /// encoder's quantiser or null. In use from the next frame on.
  set settings(settings) {
    this.#wanted = settings;
  }

  restart() {
    this.#lastTimestamp = Infinity;
    this.#figures = noFigures();
  }

  async show(frame) {
    this.#format = frame.format ?? 'known to the browser alone';
    if (Stream.takes(frame.format)) return this.#show(frame);
    const converted = await this.#convert(frame);
    try {
      await this.#show(converted);
    } finally {
      converted.close();
    }
  }

  async #show(frame) {
    const { width, height } = frame.visibleRect;
    await this.#configure(frame, width, height);
    if (frame.timestamp < this.#lastTimestamp) {
      this.#stream.reset();
      this.#number = -1;
    }
    this.#lastTimestamp = frame.timestamp;
    this.#number += 1;

    const start = performance.now();
    await frame.copyTo(this.#input.view); // the one copy of what comes in; that of what goes out is in frameOf
    const copied = performance.now();
    this.#stream.process(this.#input);
    const processed = performance.now();
    const after = frameOf(this.#stream, frame);
    this.#draw(0, frame, width, height);
    this.#draw(1, after, this.#stream.width, this.#stream.height);
    this.#encode(frame, after);
    after.close();
    this.#measure(copied - start, processed - copied, performance.now());
  }

  /// Follows the frame's shape and the settings that are wanted. What is refused is reported, the former settings stay.
  async #configure(frame, width, height) {
    const shape = [frame.format, width, height, this.#wanted.scale].join();
    if (this.#wanted === this.#settings && shape === this.#shape) return;
    const { values, scale } = this.#wanted;
    const size = [width, height].map((side) => (scale === 1 ? side : Math.max(2, 2 * Math.round((side * scale) / 2))));
    const input = { format: frame.format, width, height };
    try {
      this.#stream.configure(values, input, ...size);
    } catch (error) {
      if (this.#settings === null || shape !== this.#shape) throw error;
      this.#report('error', `${error.message}; the former settings stay`);
      this.#wanted = this.#settings;
      return;
    }
    this.#settings = this.#wanted;
    this.#input.resize(this.#stream.inputBytes);
    if (shape === this.#shape) return;
    this.#scaled.configure(this.#plainValues, input, ...size);
    this.#shape = shape;
    this.#unscaled = frame.format === 'I420' && size[0] === width && size[1] === height;
    await this.#restartEstimate(size);
    this.#report('shape', { width: frame.displayWidth, height: frame.displayHeight });
  }

  async #restartEstimate(size) {
    this.#estimate?.close();
    const codec = await findCodec(...size);
    this.#estimate =
      codec &&
      new BitEstimate(codec, ({ message }) => {
        this.#estimate = null;
        this.#report('error', `The encoder has failed, bits are not estimated: ${message}`);
      });
  }

  #encode(frame, after) {
    const { quantiser } = this.#settings;
    if (!this.#estimate || quantiser === null) return;
    if (!this.#unscaled) this.#scaled.process(this.#input);
    const before = this.#unscaled ? frame.clone() : frameOf(this.#scaled, frame);
    this.#estimate.encode(before, after, quantiser);
    before.close();
  }

  #draw(which, frame, width, height) {
    const context = this.#contexts[which];
    if (context.canvas.width !== width || context.canvas.height !== height) {
      Object.assign(context.canvas, { width, height });
    }
    context.drawImage(frame, 0, 0, width, height);
  }

  /// Frames of RGB, or of a format that only the browser knows, as I420.
  async #convert(frame) {
    const { width, height } = frame.visibleRect;
    if (this.#converter?.width !== width || this.#converter?.height !== height) {
      this.#converter?.destroy();
      this.#converter = this.#library.makeConverter(width, height, 0);
    }
    await frame.copyTo(this.#converter.picture, { format: 'RGBA' });
    const { timestamp } = frame;
    return new VideoFrame(this.#converter.convert(0), {
      format: 'I420',
      codedWidth: width,
      codedHeight: height,
      timestamp,
    });
  }

  #measure(copying, processing, now) {
    const figures = this.#figures;
    figures.frames += 1;
    figures.copying += copying;
    figures.processing += processing;
    if (now - figures.start < second) return;
    this.#report('figures', {
      framesPerSecond: (figures.frames * second) / (now - figures.start),
      copying: figures.copying / figures.frames,
      processing: figures.processing / figures.frames,
      noise: this.#stream.noise,
      bits: this.#settings.quantiser === null ? { missing: 'not asked for' } : this.#takeBits(),
      format: this.#format,
      before: this.#sizeOf(0),
      after: this.#sizeOf(1),
    });
    this.#figures = noFigures();
  }

  #takeBits() {
    return this.#estimate?.take() ?? { missing: 'no encoder here takes a quantiser' };
  }

  #sizeOf(which) {
    const { width, height } = this.#contexts[which].canvas;
    return `${width} x ${height}`;
  }

  /// The last frame that was made, as a file, and its number since the picture began.
  save() {
    return { number: this.#number, file: writeY4m(this.#stream.width, this.#stream.height, this.#stream.output) };
  }
}

function noFigures() {
  return { start: performance.now(), frames: 0, copying: 0, processing: 0 };
}

/// What a stream has made, with the time and the colours of the frame that it was made of.
function frameOf(stream, { timestamp, colorSpace }) {
  const { width: codedWidth, height: codedHeight } = stream;
  return new VideoFrame(stream.output, { format: 'I420', codedWidth, codedHeight, timestamp, colorSpace });
}
