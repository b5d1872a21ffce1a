// A clip that the page paints: somebody talks and waves before a wall with a blind, a clock and a page of text.

const width = 1280;
const height = 720;
export const framesPerSecond = 30;

/// Paints moments of the clip. `paint(seconds)` returns the picture's pixels: red, green, blue, alpha.
export class Painter {
  #context = new OffscreenCanvas(width, height).getContext('2d', { willReadFrequently: true });
  #room = new OffscreenCanvas(width, height);

  static size = { width, height };

  constructor() {
    paintRoom(this.#room.getContext('2d'));
  }

  paint(seconds) {
    this.#context.drawImage(this.#room, 0, 0);
    paintClock(this.#context, seconds);
    paintPerson(this.#context, seconds);
    return this.#context.getImageData(0, 0, width, height).data;
  }
}

function shade(context, from, to, ...colours) {
  const gradient = context.createLinearGradient(...from, ...to);
  colours.forEach((colour, i) => gradient.addColorStop(i / (colours.length - 1), colour));
  return gradient;
}

function fillEllipse(context, x, y, radiusX, radiusY, colour) {
  context.beginPath();
  context.ellipse(x, y, radiusX, radiusY, 0, 0, 2 * Math.PI);
  context.fillStyle = colour;
  context.fill();
}

function paintRoom(context) {
  context.fillStyle = shade(context, [0, 0], [width, height], '#e0d4c2', '#a89c90', '#6e6966');
  context.fillRect(0, 0, width, height);
  context.fillStyle = shade(context, [0, 60], [0, 400], '#c6dbf0', '#ecf0f0', '#bcccb0');
  context.fillRect(60, 60, 220, 340);
  context.fillStyle = '#96989c';
  for (let y = 62; y < 400; y += 8) context.fillRect(60, y, 220, 3);
  context.fillStyle = '#f0ece0';
  context.fillRect(960, 50, 270, 380);
  context.fillStyle = '#343236';
  for (let line = 0; line < 22; ++line) {
    context.font = `${line === 0 ? 26 : 8 + (line % 4) * 2}px sans-serif`;
    context.fillText('What is fine stays as it is, and noise goes', 975, 90 + 15 * line, 240);
  }
  context.fillStyle = shade(context, [0, 620], [0, height], '#b07e56', '#6c4830');
  context.fillRect(0, 620, width, height - 620);
}

function paintClock(context, seconds) {
  fillEllipse(context, 370, 140, 68, 68, '#3a3a3e');
  fillEllipse(context, 370, 140, 62, 62, '#f4f0e8');
  context.lineCap = 'round';
  for (const [turn, length, lineWidth] of [
    [0.85, 34, 5],
    [0.2, 48, 4],
    [seconds / 60, 54, 1.5],
  ]) {
    const angle = 2 * Math.PI * turn;
    context.beginPath();
    context.moveTo(370, 140);
    context.lineTo(370 + length * Math.sin(angle), 140 - length * Math.cos(angle));
    context.lineWidth = lineWidth;
    context.strokeStyle = '#343236';
    context.stroke();
  }
}

function paintPerson(context, seconds) {
  const sway = 20 * Math.sin(1.7 * seconds);
  context.save();
  context.translate(640 + sway, 0);
  context.beginPath();
  context.roundRect(-220, 440, 440, 400, 140);
  context.fillStyle = shade(context, [-220, 440], [220, 700], '#5c7aa0', '#3a5478', '#1e2e48');
  context.fill();
  context.fillStyle = '#a8725a';
  context.fillRect(-45, 380, 90, 90);
  context.translate(6 * Math.sin(2.9 * seconds), 4 * Math.sin(5 * seconds));
  fillEllipse(context, 0, 255, 118, 140, '#3e2a20');
  fillEllipse(context, 0, 285, 95, 120, shade(context, [-90, 200], [90, 380], '#f0c6aa', '#deac8e', '#a8725a'));
  for (const side of [-1, 1]) {
    fillEllipse(context, 38 * side, 270, 17, seconds % 2.6 < 0.12 ? 2 : 9, '#f4f0ec');
    fillEllipse(context, 38 * side + 2, 270, 7, seconds % 2.6 < 0.12 ? 2 : 8, '#46605c');
  }
  fillEllipse(context, 0, 350, 30, 5 + 8 * Math.abs(Math.sin(7.3 * seconds) * Math.sin(1.9 * seconds)), '#ac5452');
  context.restore();
  context.save();
  context.translate(880 + sway, 640);
  context.rotate(0.2 + 0.2 * Math.sin(5.6 * seconds));
  context.fillStyle = '#3a5478';
  context.fillRect(-36, -200, 72, 240);
  fillEllipse(context, 0, -240, 36, 48, '#deac8e');
  for (const finger of [-27, -9, 9, 27]) fillEllipse(context, finger, -290, 8, 42, '#deac8e');
  context.restore();
}
