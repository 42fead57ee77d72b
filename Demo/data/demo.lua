-- The demo's script. The application queues "frame(n, t)" every frame (n counts from 1, t is the scene time in
-- seconds) and copies these globals into the scene afterwards: the sky colours and glow of the backdrop effect,
-- the creatures' tint, and the clear colour (hidden behind the sky unless the sky's effect is missing).
clearRed, clearGreen, clearBlue = 0.02, 0.02, 0.05
pulse = 0
topRed, topGreen, topBlue = 0.05, 0.08, 0.20
bottomRed, bottomGreen, bottomBlue = 0.25, 0.12, 0.18
tintRed, tintGreen, tintBlue = 0.35, 0.80, 0.65

function frame(n, t)
  pulse = 0.5 + 0.5 * math.sin(t * 3.0)
  topRed, topGreen, topBlue = 0.04 + 0.04 * pulse, 0.07, 0.20 + 0.05 * pulse
  bottomRed, bottomGreen, bottomBlue = 0.28 - 0.06 * pulse, 0.12, 0.18
  tintRed, tintGreen, tintBlue = 0.30 + 0.25 * pulse, 0.80, 0.70 - 0.20 * pulse
end
