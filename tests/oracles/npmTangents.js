// The tangents of a mesh by the npm package "mikktspace", for tests and benchmarks.
//   node npmTangents.js PACKAGE IN OUT
// IN: for each corner of each triangle its position, normal and texture coordinates, 8 floats.  OUT: tangent and sign, 4.
// Prints the seconds of the middle one of three turns.
const fs = require('fs');
const [packagePath, input, output] = process.argv.slice(2);
const { generateTangents } = require(packagePath);
const bytes = fs.readFileSync(input);
const corners = new Float32Array(bytes.buffer, bytes.byteOffset, bytes.length / 4);
const count = corners.length / 8;
const columns = (first, width) => {
    const values = new Float32Array(count * width);
    for (let i = 0; i < count; ++i)
        values.set(corners.subarray(8 * i + first, 8 * i + first + width), width * i);
    return values;
};
const [positions, normals, texture] = [columns(0, 3), columns(3, 3), columns(6, 2)];
let tangents;
const seconds = [0, 1, 2].map(() => {
    const start = process.hrtime.bigint();
    tangents = generateTangents(positions, normals, texture);
    return Number(process.hrtime.bigint() - start) * 1e-9;
});
console.log('seconds', seconds.sort((a, b) => a - b)[1]);
fs.writeFileSync(output, Buffer.from(tangents.buffer, tangents.byteOffset, tangents.byteLength));
