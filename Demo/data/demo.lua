-- The demo's script. The application queues "frame(n, t)" every frame (n counts from 1, t is the scene time in
-- seconds); the globals set here drive the scene: the clear colour and the effect parameters.
clearRed, clearGreen, clearBlue = 0.1, 0.1, 0.15
pulse = 0

function frame(n, t)
  pulse = 0.5 + 0.5 * math.sin(t * 3.0)
  clearRed = 0.05 + 0.10 * pulse
  clearGreen = 0.08
  clearBlue = 0.15 + 0.10 * (1 - pulse)
end
