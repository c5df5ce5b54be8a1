// The tangents of a mesh by the npm package "mikktspace", for tests.
//   node npmTangents.js PACKAGE IN OUT
// IN: for each corner of each triangle its position, normal and texture coordinates, 8 floats.  OUT: tangent and sign, 4.
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
const tangents = generateTangents(columns(0, 3), columns(3, 3), columns(6, 2));
fs.writeFileSync(output, Buffer.from(tangents.buffer, tangents.byteOffset, tangents.byteLength));
