// Y4M: uncompressed video, which browsers do not play.

const headerBytes = 256;

/// {rate, frames, frame(number)} of a file whose frames all have plain headers, as every program writes them.
export async function readY4m(file) {
  const header = await lineAt(file, 0);
  const [magic, ...fields] = header.split(' ');
  if (magic !== 'YUV4MPEG2') throw new Error(`${file.name} is no Y4M`);
  const value = (letter, otherwise) => fields.find((field) => field[0] === letter)?.slice(1) ?? otherwise;
  const width = Number(value('W'));
  const height = Number(value('H'));
  if (!(Math.min(width, height) >= 2 && Math.max(width, height) <= 16384)) {
    throw new Error(`${file.name} has a size that is not supported: ${width} x ${height}`);
  }
  const chroma = value('C', '420');
  if (!/^(420|422|420(jpeg|paldv|mpeg2))$/.test(chroma)) {
    throw new Error(`${file.name} is Y4M of ${chroma}: supported are 420 and 422 with 8 bits`);
  }
  const [count, seconds] = value('F', '30:1').split(':').map(Number);
  const rate = count / seconds > 0 && count / seconds <= 1000 ? count / seconds : 30;
  const first = header.length + 1;
  const frameHeader = (await lineAt(file, first)).length + 1;
  const format = chroma === '422' ? 'I422' : 'I420';
  const chromaRows = format === 'I422' ? height : Math.ceil(height / 2);
  const bytes = width * height + 2 * Math.ceil(width / 2) * chromaRows;
  const frames = Math.floor((file.size - first) / (frameHeader + bytes));
  if (frames < 1) throw new Error(`${file.name} holds no whole frame`);
  return {
    rate,
    frames,
    async frame(number) {
      const start = first + number * (frameHeader + bytes) + frameHeader;
      const data = await file.slice(start, start + bytes).arrayBuffer();
      const timestamp = (number * 1e6) / rate;
      const shape = { format, codedWidth: width, codedHeight: height, timestamp };
      return new VideoFrame(data, { ...shape, transfer: [data] });
    },
  };
}

/// The same without the line's end; empty where there is none.
async function lineAt(file, start) {
  const text = new TextDecoder('latin1').decode(await file.slice(start, start + headerBytes).arrayBuffer());
  return text.slice(0, Math.max(text.indexOf('\n'), 0));
}

/// A file of one frame of I420, for video of BT.709 or of no named colours.
export function writeY4m(width, height, bytes) {
  return new Blob([`YUV4MPEG2 W${width} H${height} F30:1 Ip A1:1 C420mpeg2\nFRAME\n`, bytes]);
}
