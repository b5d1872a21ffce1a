// What an encoder would need: two of them take the same frames before and after, at one quantiser.

/// `highest` is a codec's quantiser for 255, the page's highest.
const codecs = [
  { name: 'VP9', codec: 'vp09.00.41.08', key: 'vp9', highest: 255 },
  { name: 'AV1', codec: 'av01.0.08M.08', key: 'av1', highest: 255 },
  { name: 'H.264', codec: 'avc1.640028', key: 'avc', highest: 51 },
];
const mostWaiting = 3;

/// The first codec that encodes with a given quantiser here.
export async function findCodec(width, height) {
  if (!('VideoEncoder' in self)) return null;
  for (const codec of codecs) {
    const config = { codec: codec.codec, width, height, bitrateMode: 'quantizer', latencyMode: 'realtime' };
    const { supported } = await VideoEncoder.isConfigSupported(config).catch(() => ({ supported: false }));
    if (supported) return { ...codec, config };
  }
  return null;
}

class Counter {
  #encoder;
  #key;
  #highest;
  bits = 0;
  frames = 0;

  constructor({ config, key, highest }, onError) {
    this.#key = key;
    this.#highest = highest;
    this.#encoder = new VideoEncoder({ output: (chunk) => this.#count(chunk), error: onError });
    this.#encoder.configure(config);
  }

  /// Key frames come once, and not at all in a second that is measured.
  #count(chunk) {
    if (chunk.type === 'key') return;
    this.bits += 8 * chunk.byteLength;
    this.frames += 1;
  }

  get waiting() {
    return this.#encoder.encodeQueueSize;
  }

  encode(frame, quantiser) {
    const quantizer = Math.round((quantiser * this.#highest) / 255);
    this.#encoder.encode(frame, { [this.#key]: { quantizer } });
  }

  /// Of a frame, since the last call.
  take() {
    const mean = this.frames ? this.bits / this.frames : null;
    this.bits = this.frames = 0;
    return mean;
  }

  close() {
    if (this.#encoder.state !== 'closed') this.#encoder.close();
  }
}

export class BitEstimate {
  #before;
  #after;

  constructor(codec, onError) {
    this.name = codec.name;
    this.#before = new Counter(codec, onError);
    this.#after = new Counter(codec, onError);
  }

  /// Both or, where the encoders do not keep up, neither.
  encode(before, after, quantiser) {
    if (Math.max(this.#before.waiting, this.#after.waiting) >= mostWaiting) return;
    this.#before.encode(before, quantiser);
    this.#after.encode(after, quantiser);
  }

  /// Bits of a frame before and after, null before the first.
  take() {
    return { codec: this.name, before: this.#before.take(), after: this.#after.take() };
  }

  close() {
    this.#before.close();
    this.#after.close();
  }
}
